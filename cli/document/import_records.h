#pragma once

#include <string>

#include "cli/document/template_format.h"

namespace rastrel::cli {

/// The records that the reader of a format makes of a template, as lines of JSON
/// (docs/formats/template-records.md); empty if it makes none. `path` is the file for the reader by
/// library path, and `name` its name for people. REQUIRES: a host is installed, whose palette has
/// the colors by name.
[[nodiscard]] std::string ImportRecordLines(TemplateFormat format, const std::wstring& path,
                                            const std::string& name);

}  // namespace rastrel::cli
