#include "spreadsheet/spreadsheet.h"

namespace rastrel::spreadsheet {

const char* WordOf(Visibility visibility) {
  switch (visibility) {
    case Visibility::Hidden: return "hidden";
    case Visibility::VeryHidden: return "very-hidden";
    case Visibility::Visible: break;
  }
  return "visible";
}

std::string ColumnName(std::uint64_t column) {
  std::string name;
  for (; column > 0; column = (column - 1) / 26)
    name.insert(name.begin(), static_cast<char>('A' + (column - 1) % 26));
  return name;
}

}  // namespace rastrel::spreadsheet
