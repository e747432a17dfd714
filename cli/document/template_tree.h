#pragma once

#include <string>

#include "cli/document/template_format.h"
#include "rastrel/xml/node.h"

namespace rastrel::cli {

/// The document element of a template by library path, as the reader of its format sees it: a file
/// that is refused is repaired by the format's rules. None if it can't be read; TakeXmlFailure
/// (xml/failure.h) then has the reason.
[[nodiscard]] XmlNode LoadTemplate(TemplateFormat format, const std::wstring& path);

}  // namespace rastrel::cli
