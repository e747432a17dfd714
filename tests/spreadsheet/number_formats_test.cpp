// Numbers by their formats, held to the table that number_formats.py makes from the standard.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "spreadsheet/format_code.h"

namespace rastrel::test {
namespace {

using spreadsheet::DateSystem;
using spreadsheet::FormatCode;

struct TableLine {
  DateSystem dates = DateSystem::From1900;
  std::string code;
  std::string value;
  std::string text;
};

std::vector<TableLine> ReadTable() {
  std::ifstream file(std::string(RASTREL_SOURCE_DIR) + "/tests/spreadsheet/number_formats.tsv");
  std::vector<TableLine> lines;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    std::string system;
    TableLine one;
    std::getline(fields, system, '\t');
    std::getline(fields, one.code, '\t');
    std::getline(fields, one.value, '\t');
    std::getline(fields, one.text);
    if (system == "1904") one.dates = DateSystem::From1904;
    lines.push_back(one);
  }
  return lines;
}

std::string Shown(const TableLine& line) {
  const FormatCode code(line.code);
  if (line.value.starts_with('\''))
    return code.ShowText(line.value.substr(1, line.value.size() - 2));
  return code.ShowNumber(std::strtod(line.value.c_str(), nullptr), line.dates);
}

TEST(NumberFormats, are_shown_as_the_table_says) {
  const std::vector<TableLine> table = ReadTable();
  ASSERT_GT(table.size(), 2000U);
  for (const TableLine& line : table)
    EXPECT_EQ(Shown(line), line.text) << line.code << " of " << line.value;
}

}  // namespace
}  // namespace rastrel::test
