#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Random files of spreadsheets, most of them sound, many of them odd, some broken.
namespace rastrel::test {

class SpreadsheetFiles {
 public:
  explicit SpreadsheetFiles(std::uint32_t seed) : m_Random(seed) {}

  bool OneIn(int count) { return Below(count) == 0; }
  int Below(int count) { return static_cast<int>(m_Random() % static_cast<unsigned>(count)); }

  std::string Workbook() {
    std::string text = "<workbook xmlns:r='r'><sheets>";
    for (int sheets = OneIn(12) ? 0 : Below(3) + 1; sheets > 0; --sheets)
      text += "<sheet name='x' sheetId='1' " + Pick({"r:id", "r:id", "r:id", "id", "xid"}) + "='" +
              SheetId() + "'/>";
    return Broken(text + "</sheets></workbook>", 20);
  }

  std::string Relationships() {
    std::string text = "<Relationships>";
    for (int count = Below(4) + 3; count > 0; --count)
      text += "<Relationship Id='" + SheetId() + "' Type='t' Target='worksheets/sheet" +
              std::to_string(Below(3)) + ".xml'/>";
    return Broken(text + "</Relationships>", 20);
  }

  std::string Strings() {
    std::string text = "<sst>";
    for (int count = Below(8); count > 0; --count) {
      text += Pick({"<si>", "<si>", "<si>", "<si><x/>", "<!--c--><si>"});
      for (int texts = OneIn(4) ? Below(3) : 1; texts > 0; --texts) text += StringText();
      text += "</si>";
    }
    return Broken(text + Pick({"", "<x><t>no</t></x>", "text"}) + "</sst>", 10);
  }

  std::string Sheet() {
    std::string data = "<sheetData" + Pick({"", " a='b'"}) + ">" + Rows() + "</sheetData>";
    if (OneIn(8)) data += "<sheetData>" + Rows() + "</sheetData>";
    if (OneIn(10)) data = "<x>" + data + "</x>";
    if (OneIn(10)) data.clear();
    std::string text = "<worksheet><cols/>" + data + "</worksheet>";
    if (OneIn(8)) text = "<x>" + Pick({"", "<worksheet/>", "<y/>", data}) + text + "</x>";
    return Broken(text, 16);
  }

  std::string OpenOffice() {
    std::string text = "<document-content xmlns:table='t' xmlns:text='x'>" +
                       Pick({"", "", "<x/>", "<body/>"}) + "<body>" + Pick({"", "<x/>"});
    for (int count = OneIn(6) ? Below(3) : 1; count > 0; --count) {
      text += "<spreadsheet>";
      for (int tables = Below(4); tables > 0; --tables) text += Table();
      text += "</spreadsheet>";
    }
    text += "</body>" + Pick({"", "<body><spreadsheet><table/></spreadsheet></body>"});
    return Broken(text + Pick({"</document-content>", "</document-content>\n<!-- end -->"}), 8);
  }

 private:
  std::string Pick(const std::vector<std::string>& choices) {
    return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
  }

  // Now and then cut off, or with a byte changed.
  std::string Broken(std::string text, int oneIn) {
    if (!OneIn(oneIn)) return text;
    const auto at = static_cast<std::size_t>(Below(static_cast<int>(text.size())));
    if (OneIn(2)) return text.substr(0, at);
    text[at] = static_cast<char>(Below(96) + 32);
    return text;
  }

  std::string SheetId() {
    return OneIn(12) ? Pick({"rId9", ""}) : "rId" + std::to_string(Below(3));
  }

  std::string StringText() {
    return "<t" + Pick({">", " xml:space='preserve'>"}) + Words() + "</t>" +
           (OneIn(6) ? "<r><t>" + Words() + "</t></r>" : "");
  }

  std::string Words() {
    std::string words;
    for (int count = Below(4); count > 0; --count)
      words += Pick({"word",
                     " ",
                     "\n",
                     "\t",
                     "&amp;",
                     "&amp;amp;",
                     "&amp;lt;",
                     "&lt;",
                     "&amp;quot;",
                     "&#10;",
                     "&#13;",
                     "&#9;",
                     "\xC3\xA4",
                     "\xF0\x9F\x98\x80",
                     ".",
                     ",",
                     "<![CDATA[&apos; ]]>",
                     "<!-- no -->",
                     "<x>y</x>",
                     "\r\n",
                     "&amp;apos;",
                     "\xC2\xA0"});
    return words;
  }

  std::string Rows() {
    std::string rows;
    for (int count = Below(6); count > 0; --count) {
      rows += Pick({"", "", "", "\n", "<!-- c -->", "<x/>", "text"});
      rows += "<row r='1' spans='1:2'>" + Cells() + "</row>";
    }
    return rows;
  }

  std::string Cells() {
    std::string cells;
    int column = 0;
    for (int count = OneIn(8) ? 30 : Below(6); count > 0; --count) {
      column += OneIn(3) ? Below(4) : 1;
      cells += Pick({"", "", "", "", "", "\n  ", "<!-- -->", "<x/>", "t", "<?i?>"});
      cells += "<c" + Reference(column) +
               Pick({"", "", " s='1'", " t='s'", " t='s'", " t='str'", " t='b'"}) + ">" +
               CellValue() + "</c>";
    }
    return cells;
  }

  std::string Reference(int column) {
    if (OneIn(12))
      return Pick({"", " r=''", " r='a1'", " r='7'", " r='AA3'", " r='ZZTOP'", " r='\xC3\x84'"});
    return std::string(" r='") + static_cast<char>('A' + (column + 25) % 26) + "1'";
  }

  std::string CellValue() {
    const std::string value = "<v>" + Number() + "</v>";
    return Pick({value, value, value, value, "", "<v/>", "<v> </v>", "<f>1</f>" + value,
                 "<is><t>x</t></is>", "<v/>" + value, value + "<v>9</v>", "<x>" + value + "</x>",
                 "<!-- c -->" + value});
  }

  std::string Number() {
    std::string digits = std::to_string(Below(12));
    switch (Below(12)) {
      case 0: return Pick({"abc", "#N/A", "TRUE", "1e5", ".", "-.", "1.", ".5", "+.5", "1.5e3"});
      case 1:
        return Pick({"9223372036854775808", "-9223372036854775809", "1.0e400", "-1.5e999",
                     "1.0e-400", "123456789012345678.5", "0x1F", "inf.", "1.7976931348623157e308"});
      case 2: return "-" + digits;
      case 3: return Pick({" ", "\n", "+", "--", "00"}) + digits + Pick({" ", "", "x"});
      case 4:
      case 5: return LongFraction();
      case 6: return digits + "<!-- -->" + digits;
      case 7: return digits + "<![CDATA[.]]>5";
      default: return digits;
    }
  }

  // Of all lengths, many of them next to a half of the last digit that is shown.
  std::string LongFraction() {
    std::string number = OneIn(3) ? "-" : "";
    for (int digits = Below(12); digits >= 0; --digits)
      number += static_cast<char>('0' + Below(10));
    number += '.';
    for (int digits = Below(8); digits > 0; --digits) number += static_cast<char>('0' + Below(10));
    number += Pick(
        {"", "5", "50000", "49999", "5000000000001", "4999999999999", "49985", "50015", "99999"});
    return number;
  }

  std::string Table() {
    std::string table = "<table:table>" + Pick({"", "<table:table-column/>", "text"});
    for (int rows = Below(5); rows > 0; --rows) {
      table += Pick({"", "", "\n", "<!-- -->",
                     "<table:table-header-rows><table:table-row/>"
                     "</table:table-header-rows>"});
      table += "<table:table-row table:number-rows-repeated='2'>";
      for (int cells = Below(5); cells > 0; --cells) table += TableCell();
      table += "</table:table-row>";
    }
    return table + "</table:table>";
  }

  std::string TableCell() {
    const std::string name = Pick({"table:table-cell", "table:table-cell", "table:table-cell",
                                   "table:covered-table-cell", "table-cell"});
    const std::string repeat =
        OneIn(3) ? Pick({"table:number-columns-repeated", "table:number-columns-repeated",
                         "number-columns-repeated"}) +
                       "='" + Pick({"2", "3", "100", "0", "-1", "x", "", " 2", "2.5"}) + "'"
                 : "";
    std::string cell = "<" + name + " " + repeat + ">";
    for (int count = OneIn(3) ? Below(4) : 1; count > 0; --count)
      cell += OneIn(2) ? "<p>" + Words() + "</p>"
                       : "<text:p>" + Words() +
                             Pick({"", "<text:span>" + Words() + "</text:span>"}) + "</text:p>";
    return cell + Pick({"", "", "<x><p>no</p></x>"}) + "</" + name + ">";
  }

  std::mt19937 m_Random;
};

}  // namespace rastrel::test
