// The import of Excel workbooks against a literal one that holds trees: the input as a sheet, as
// the shared strings, as the workbook, and as the seed of random workbooks.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "tests/support/spreadsheet_answers.h"
#include "tests/support/spreadsheet_files.h"

namespace {

using rastrel::test::ExcelFolder;

void ExpectNoDifference(ExcelFolder& folder) {
  const std::string difference = rastrel::test::DifferenceFromLiteral(folder);
  if (difference.empty()) return;
  std::cerr << difference << '\n';
  std::abort();
}

constexpr std::string_view Strings = "<si><t>zero</t></si><si><t>&amp;amp;lt;\none</t></si>";
constexpr std::string_view Rows =
    "<row><c r='A1' t='s'><v>0</v></c><c r='C1' t='s'><v>1</v></c><c r='D1'><v>1.5</v></c></row>";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static ExcelFolder folder(2);
  const std::string input(reinterpret_cast<const char*>(bytes), size);
  folder.WriteWorkbook(2);
  folder.WriteStrings(Strings);
  folder.WriteSheet(input, 1);
  folder.WriteRows(Rows, 2);
  ExpectNoDifference(folder);
  folder.WriteRows(Rows, 1);
  folder.WriteSheet(input, 2);
  ExpectNoDifference(folder);
  folder.Directory().Write("xl/sharedStrings.xml", input);
  folder.WriteRows(Rows, 2);
  ExpectNoDifference(folder);

  std::uint32_t seed = 2166136261;
  for (std::size_t index = 0; index < size; ++index) seed = (seed ^ bytes[index]) * 16777619;
  rastrel::test::SpreadsheetFiles files(seed);
  folder.Directory().Write("xl/workbook.xml", files.Workbook());
  folder.Directory().Write("xl/_rels/workbook.xml.rels", files.Relationships());
  folder.Directory().Write("xl/sharedStrings.xml", files.Strings());
  for (std::size_t sheet = 1; sheet < 3; ++sheet) folder.WriteSheet(files.Sheet(), sheet);
  ExpectNoDifference(folder);
  return 0;
}
