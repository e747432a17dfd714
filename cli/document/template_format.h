#pragma once

#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "rastrel/xml/node.h"

namespace rastrel::cli {

/// The formats of files that become documents.
enum class TemplateFormat {
  Document,    ///< a document of the embedded host (docs/formats/document.md)
  Abb,         ///< the plate XML of ABB (docs/formats/abb-plates.md)
  BrightStar,  ///< text frames on one blank (docs/formats/bright-star.md)
  Cro,         ///< plates in rows on a blank (docs/formats/cro.md)
  Llx,         ///< one plate with graphics and arc text (docs/formats/llx.md)
  Cr2,         ///< Crown Trophy, first generation (docs/formats/crown-trophy.md)
  Zml,         ///< Crown Trophy, second generation (the same page)
};

/// The format's name as `--format` takes it.
[[nodiscard]] std::string_view NameOf(TemplateFormat format);

/// The format of that name. Any other name fails with a message for the user.
[[nodiscard]] Expected<TemplateFormat> FormatNamed(const std::string& name);

/// The extensions that the format's reader takes, without dots and separated by spaces; empty if it
/// takes any.
[[nodiscard]] std::string_view ReaderExtensions(TemplateFormat format);
/// Whether the format's reader takes a file of that name. `path` is native.
[[nodiscard]] bool HasReaderExtension(TemplateFormat format, const std::string& path);

/// The format of a file: by its extension where no other format has it, and else by its content:
/// the name of its root and the elements in it. `path` is native. A file that can't be read or is
/// of no format, or that could be of two, is FailureCode::BadInput, with file, line and reason;
/// without a parser of XML the failure has no code.
[[nodiscard]] Expected<TemplateFormat> FormatOfFile(const std::string& path);

/// The format that a template's elements show. The failure is a reason without the file's name.
[[nodiscard]] Expected<TemplateFormat> FormatOfRoot(const XmlNode& root);

}  // namespace rastrel::cli
