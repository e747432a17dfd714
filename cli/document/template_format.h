#pragma once

#include <string>
#include <string_view>

namespace rastrel::cli {

/// The formats of files that become documents.
enum class TemplateFormat {
  Document,  ///< a document of the embedded host (docs/formats/document.md)
  Abb,       ///< the plate XML of ABB (docs/formats/abb-plates.md)
};

/// The format's name as `--format` takes it.
[[nodiscard]] std::string_view NameOf(TemplateFormat format);

/// The format of a file: the one that `name` chooses, or, where it is empty, the one that the
/// file's extension and content show. `path` is native. Throws CommandError: WrongUse for a name
/// that is no format's, BadInput with file, line and reason for a file that can't be read or is of
/// no format.
[[nodiscard]] TemplateFormat FormatOfTemplate(const std::string& path, const std::string& name);

}  // namespace rastrel::cli
