#pragma once

#include <string>
#include <string_view>

#include "rastrel/readers/sheet_text.h"

/// The changes to a cell's text on its way to the result. All bytes are UTF-8.
namespace rastrel::readers {

/// Replaces a line feed of an Excel cell's text in the result, so that a cell stays on its line.
/// Programs that read the result turn it back.
inline constexpr char CellLineBreak = '\x08';

/// Appends the number that the text holds, as "%I64d" prints it if there is no full stop in the
/// text, as "%f" does otherwise. A text that is no number is 0, so a formula's text becomes "0",
/// and so does an error such as "#N/A"; of others the longest part in front that is a number
/// counts: "1E5" is "1". Integers end at the largest and smallest of 64 bits. Beyond the range of a
/// double the result is "inf" or "-inf". Fractions are rounded from the binary number, halves to
/// even. Never by the locale.
void AppendNumber(SheetText& text, std::string_view number);

/// Replaces "&quot;", "&amp;", "&lt;", "&gt;", "&apos;" by their characters, one kind after the
/// other in this order: "&amp;lt;" becomes "<", and "&amp;quot;" becomes "&quot;". True if `value`
/// was changed into `scratch`; else it has none of them.
bool ReplaceEntities(std::string_view value, std::string& scratch);

/// Returns the value of a shared string: entities replaced as above, and each line feed by
/// CellLineBreak. The result lies in `value` or in `scratch`.
[[nodiscard]] std::string_view CleanedValue(std::string_view value, std::string& scratch);

}  // namespace rastrel::readers
