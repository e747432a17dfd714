#pragma once

#include "cli/document/finding.h"
#include "cli/document/template_schema.h"
#include "rastrel/xml/node.h"

namespace rastrel::cli {

/// All that a template has and its reader passes over, by the schema of its format: elements and
/// attributes that are not known, needed ones that are missing, numbers that are none, keywords
/// that are not known. In the file's order.
[[nodiscard]] Findings CheckSchema(const TemplateSchema& schema, const XmlNode& root);

/// Whether a text is a number as a whole; spaces and tabs at its ends don't count.
[[nodiscard]] bool IsNumber(std::wstring_view text);

}  // namespace rastrel::cli
