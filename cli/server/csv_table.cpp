#include "cli/server/csv_table.h"

#include <string_view>

#include "cli/console/values.h"

namespace rastrel::cli {
namespace {

bool LooksLikeFormula(const std::string& cell) {
  if (cell.empty() || std::string_view("=+-@\t\r").find(cell.front()) == std::string_view::npos)
    return false;
  return !(cell.front() == '-' && NumberOf(std::string_view(cell).substr(1)));
}

}  // namespace

std::string CsvRow(const std::vector<std::string>& cells) {
  std::string row;
  for (std::size_t index = 0; index < cells.size(); ++index) {
    const std::string cell = (LooksLikeFormula(cells[index]) ? "'" : "") + cells[index];
    if (index != 0) row += ',';
    if (cell.find_first_of(",\"\r\n") == cell.npos) {
      row += cell;
      continue;
    }
    row += '"';
    for (const char character : cell) {
      if (character == '"') row += '"';
      row += character;
    }
    row += '"';
  }
  return row + "\r\n";
}

}  // namespace rastrel::cli
