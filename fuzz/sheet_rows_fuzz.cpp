// Values of spreadsheets as people see them, made of any bytes. The first byte chooses the kind of
// the others: a number format, a flat spreadsheet, a sheet of a workbook, its shared strings, or
// its formats.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/sheet/row_text.h"
#include "spreadsheet/error.h"
#include "spreadsheet/format_code.h"
#include "spreadsheet/open_document.h"
#include "spreadsheet/workbook.h"
#include "tests/support/scratch_directory.h"

namespace {

using namespace rastrel::spreadsheet;

void Check(bool fine) {
  if (!fine) std::abort();
}

// Rows grow, are not empty, and stay in their bounds.
class Checker : public RowSink {
 public:
  rastrel::Expected<void> BeginSheet(const SheetInfo&, std::size_t number) override {
    Check(number > 0);
    m_Row = 0;
    return {};
  }
  rastrel::Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override {
    Check(row > m_Row && row <= limits::Rows);
    Check(!cells.empty() && cells.size() <= limits::Columns && !cells.back().empty());
    m_Row = row;
    std::string line;
    for (const std::string& cell : cells) rastrel::cli::sheet::AppendEscaped(line, cell);
    Check(line.find_first_of("\n\t\r") == line.npos);
    return {};
  }

 private:
  std::uint64_t m_Row = 0;
};

void ShowFormat(std::string_view code) {
  const FormatCode format(code);
  for (const double value : {0.0, 1.0, -1.0, 0.999999, 44197.9999999, -1e9, 1e300, 5e-324})
    for (const DateSystem dates : {DateSystem::From1900, DateSystem::From1904})
      Check(format.ShowNumber(value, dates).size() < 4000 + 100 * code.size());
  static_cast<void>(format.ShowText("text"));
}

constexpr std::string_view Strings =
    "<sst><si><t>a</t></si><si><r><t>b</t></r><rPh><t>c</t></rPh></si></sst>";
constexpr std::string_view Rows =
    "<worksheet><sheetData><row r='2'><c r='B2' t='s'><v>1</v></c><c s='1'><v>1.5</v></c></row>"
    "</sheetData></worksheet>";
constexpr std::string_view Styles =
    "<styleSheet><cellXfs><xf numFmtId='14'/></cellXfs></styleSheet>";

void ShowWorkbook(const rastrel::test::ScratchDirectory& scratch, std::string_view strings,
                  std::string_view rows, std::string_view styles) {
  scratch.Write("in/strings.xml", strings);
  scratch.Write("in/sheet.xml", rows);
  scratch.Write("in/styles.xml", styles);
  for (const char* name : {"out/strings.xml", "out/sheet.xml", "out/styles.xml"})
    std::filesystem::remove(scratch.Path(name));
  std::filesystem::create_directories(scratch.Path("out"));
  Parts parts(OpenFolderPackage(scratch.Path("in")), scratch.Path("out"), {});
  Workbook workbook;
  workbook.strings = "strings.xml";
  workbook.styles = "styles.xml";
  SheetInfo sheet;
  sheet.part = "sheet.xml";
  workbook.sheets.push_back(sheet);
  Checker checker;
  ReadWorkbookRows(parts, workbook, -1, checker);
}

void ShowDocument(const rastrel::test::ScratchDirectory& scratch, std::string_view document) {
  scratch.Write("document", document);
  const XmlPlace place{scratch.Path("document"), "document"};
  Checker checker;
  ReadOpenDocumentRows(place, -1, checker);
  static_cast<void>(ReadOpenDocumentSheets(place));
  OrThrow(WriteSpreadsheetContent(place, -1, scratch.Path("content.xml")));
  // The document handed to the import has the same tables.
  const XmlPlace content{scratch.Path("content.xml"), "content"};
  Check(ReadOpenDocumentSheets(place).size() == ReadOpenDocumentSheets(content).size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  static const rastrel::test::MemoryScratchDirectory scratch;
  const std::string_view input(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  try {
    switch (bytes[0] % 5) {
      case 0: ShowFormat(input); break;
      case 1: ShowDocument(scratch, input); break;
      case 2: ShowWorkbook(scratch, Strings, input, Styles); break;
      case 3: ShowWorkbook(scratch, input, Rows, Styles); break;
      default: ShowWorkbook(scratch, Strings, Rows, input); break;
    }
  } catch (const Error& error) {
    Check(error.Reason().error == 0);
  }
  return 0;
}
