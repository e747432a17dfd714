#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The formats of files that become documents.
enum class TemplateFormat {
  Document,  ///< a document of the embedded host (docs/formats/document.md)
  Abb,       ///< the plate XML of ABB (docs/formats/abb-plates.md)
};

/// The format's name as `--format` takes it.
[[nodiscard]] std::string_view NameOf(TemplateFormat format);

/// The format of that name. Any other name fails with a message for the user.
[[nodiscard]] Expected<TemplateFormat> FormatNamed(const std::string& name);

/// The format that the file's content shows. `path` is native. A file that can't be read or is of
/// no format is FailureCode::BadInput, with file, line and reason; without a parser of XML the
/// failure has no code.
[[nodiscard]] Expected<TemplateFormat> FormatOfFile(const std::string& path);

}  // namespace rastrel::cli
