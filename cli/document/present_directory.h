#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Makes a directory the process's present one as long as the object lives: importers take relative
/// names from there. One at a time, and while no other thread uses relative paths.
class PresentDirectory {
 public:
  /// `path` is native.
  [[nodiscard]] static Expected<PresentDirectory> Enter(const std::string& path);
  ~PresentDirectory();
  PresentDirectory(PresentDirectory&& other) noexcept;
  PresentDirectory& operator=(PresentDirectory&&) = delete;
  PresentDirectory(const PresentDirectory&) = delete;
  PresentDirectory& operator=(const PresentDirectory&) = delete;

 private:
  explicit PresentDirectory(std::string before) : m_Before(std::move(before)) {}

  std::string m_Before;  // empty if moved from
};

}  // namespace rastrel::cli
