#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// A template of the shop.
struct TemplateFile {
  std::string name;           ///< of the file, UTF-8, with its extension
  std::string path;           ///< full, native
  std::uint64_t bytes = 0;    ///< of the file
  std::int64_t modified = 0;  ///< milliseconds since 1970
  std::string stamp;          ///< another one as soon as the file is changed
};

/// Whether a name can be that of a template: UTF-8 of at most 255 bytes without separators and
/// control characters, not hidden, with an extension that a reader of templates takes.
[[nodiscard]] bool IsTemplateName(std::string_view name);

/// The directory of the shop's templates. Files in it whose names are none of a template (graphics,
/// say) are passed over, and so are links, directories and all below them. Any thread.
class TemplateFolder {
 public:
  /// More templates are not listed.
  static constexpr std::size_t ListLimit = 1000;

  /// `directory` is native, and need not exist.
  explicit TemplateFolder(std::string directory) : m_Directory(std::move(directory)) {}

  /// All of them by name. Without the directory there are none.
  [[nodiscard]] Expected<std::vector<TemplateFile>> List() const;
  /// The one of this very name. The failure is FailureCode::BadInput, for any name that is none.
  [[nodiscard]] Expected<TemplateFile> Find(const std::string& name) const;

  [[nodiscard]] const std::string& Directory() const { return m_Directory; }

 private:
  std::string m_Directory;
};

}  // namespace rastrel::server::web
