#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The extension of a PNG or JPEG file's kind, by its first bytes: "png" or "jpg"; empty for any
/// other file, and for one that can't be read.
[[nodiscard]] std::string PictureKindOf(const std::string& path);

/// Fails, with the reason, for a file that the server can't print: it is missing, or none of
/// PostScript, EPS, PDF, PNG and JPEG. A picture is not read to its end here.
[[nodiscard]] Expected<void> CheckQueuedInput(const std::string& path);

/// The file that the RIP gets for one of the queue: the same, or for a picture a PDF page with the
/// same pixels, at `pagePath`, which is replaced. `pagePath` goes with this object.
class QueuedInput {
 public:
  /// Fails, with the reason and FailureCode::BadInput, for a picture that is damaged or of a kind
  /// that is not printed.
  [[nodiscard]] static Expected<QueuedInput> Prepare(const std::string& path,
                                                     const std::string& pagePath);
  ~QueuedInput();
  QueuedInput(QueuedInput&& other) noexcept;
  QueuedInput& operator=(QueuedInput&&) = delete;

  [[nodiscard]] const std::string& Path() const { return m_Path; }

 private:
  QueuedInput() = default;

  std::string m_Path;
  std::string m_Page;  // the page that was made; empty if none was
};

}  // namespace rastrel::cli
