#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"
#include "spreadsheet/spreadsheet.h"

/// Tables as text: values with separators between them, a row a line (RFC 4180), as spreadsheets
/// export them.
namespace rastrel::spreadsheet {

/// The maximum size of such a file in bytes.
inline constexpr std::uint64_t MaximumSeparatedText = 256ULL << 20;

/// UTF-8 of a file's bytes: UTF-16 of either order if a byte order mark says so, else UTF-8, and
/// Windows-1252 if the bytes are no UTF-8. A mark is left out.
[[nodiscard]] std::string TextOfTable(std::string_view bytes);

/// The separator of a table: of comma, semicolon and tab the one that its first line has most of
/// outside double quotes; a comma if it has none.
[[nodiscard]] char SeparatorOf(std::string_view text);

/// Hands a table's rows over, as UTF-8. A value in double quotes may hold separators, line ends,
/// and quotes that are doubled; whitespace belongs to its value. Lines end in CR LF, LF or CR. A
/// line without any value is no row, but counts.
///
/// Fails with the line, if a quote is not closed or more than a separator or a line end comes after
/// one, with the limit if the table has more rows, columns or bytes in a cell than a spreadsheet
/// may have, and with the sink's failure.
[[nodiscard]] Expected<void> ReadSeparatedText(std::string_view text, char separator,
                                               RowSink& sink);

}  // namespace rastrel::spreadsheet
