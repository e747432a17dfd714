#pragma once

#include <string>
#include <vector>

namespace rastrel::cli {

/// A row of a table as RFC 4180 has it, with its line end (CR LF). Cells with commas, quotes or
/// line ends are quoted. A cell that begins with one of = + - @, a tab or a CR gets an apostrophe
/// in front, since a spreadsheet would run it as a formula; a number keeps its minus.
[[nodiscard]] std::string CsvRow(const std::vector<std::string>& cells);

}  // namespace rastrel::cli
