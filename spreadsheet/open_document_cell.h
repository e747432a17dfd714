#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

namespace rastrel::spreadsheet {

/// The text of a cell of an OpenDocument table: its paragraphs, one on a line, as their writer
/// formatted them; without any, its value. A run of whitespace is one space, as the standard
/// demands (ISO/IEC 26300-1, 6.1.2); spaces, tabs and line breaks that are elements are kept. Notes
/// are left out. Returns why the cell is refused, empty if it is not.
[[nodiscard]] std::wstring ShowOpenDocumentCell(const XmlNode& cell, std::string& text);

/// How often a cell or row comes; 1 unless the attribute is a larger number.
[[nodiscard]] std::uint64_t RepeatsOf(const XmlNode& node, std::wstring_view attribute);

}  // namespace rastrel::spreadsheet
