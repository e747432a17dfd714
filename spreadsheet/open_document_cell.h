#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rastrel/xml/node.h"

namespace rastrel::spreadsheet {

/// What a cell of an OpenDocument table shows: its paragraphs, one on a line, as their writer
/// formatted them; without any, its value. Runs of blanks are one blank, as the standard has it
/// (ISO/IEC 26300-1, 6.1.2); blanks, tabs and line breaks that are elements stay what they are.
/// Notes don't count. Returns why the cell can't be shown, empty if it can.
[[nodiscard]] std::wstring ShowOpenDocumentCell(const XmlNode& cell, std::string& text);

/// How often a cell or row comes; 1 unless the attribute is a larger number.
[[nodiscard]] std::uint64_t RepeatsOf(const XmlNode& node, std::wstring_view attribute);

}  // namespace rastrel::spreadsheet
