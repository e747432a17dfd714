#include "rastrel/readers/excel_sheet.h"

#include <string>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/cell_value.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/walk.h"

namespace rastrel::readers {
namespace {

using xml::StreamChoice;
using namespace std::string_view_literals;

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

// Never takes off anything as long as each cell ends in its tab, and the tab is there for that.
constexpr std::string_view RowEnds = " ,.";

class SheetReader : public xml::XmlStreamHandler {
 public:
  SheetReader(const SharedStrings& strings, SheetText& text) : m_Strings(strings), m_Text(text) {}

  StreamChoice Begin(std::wstring_view baseName, const XmlNode&, int depth) override {
    if (depth == 0) {
      m_DataDepth = baseName == L"worksheet" ? 1 : 2;
      return StreamChoice::Enter;
    }
    if (depth < m_DataDepth) return Once(m_HasWorksheet, baseName == L"worksheet");
    if (depth == m_DataDepth) return Once(m_HasData, baseName == L"sheetData");
    return baseName == L"row" ? StreamChoice::Node : StreamChoice::Skip;
  }

  void Node(const XmlNode& row) override {
    AppendRow(row);
    m_Text.TrimRight(RowEnds);
    m_Text.Append('\n');
    if (m_Text.IsOverLimit())
      Refuse("the sheets become more than " + std::to_string(m_Text.Size()) + " bytes of text");
  }

  void End(std::wstring_view, int) override {}

  [[nodiscard]] bool HasData() const { return m_HasData; }

 private:
  static StreamChoice Once(bool& done, bool isWanted) {
    if (done || !isWanted) return StreamChoice::Skip;
    done = true;
    return StreamChoice::Enter;
  }

  // Every child counts in a cell's place, also a comment or one of another name.
  void AppendRow(const XmlNode& row) {
    std::size_t place = 0;
    for (XmlNode cell = xml::FirstChild(row); cell; cell = xml::NextSibling(cell)) {
      if (xml::IsNamed(cell, L"c"sv)) {
        place += AppendGap(xml::AttributeBytes(cell, L"r"sv), place);
        AppendValue(cell);
        m_Text.Append('\t');
      }
      ++place;
    }
  }

  // Writes the tabs in front of a cell, and returns their number.
  std::size_t AppendGap(std::string_view reference, std::size_t place) {
    std::size_t letter = place;
    while (letter < Alphabet.size() && reference.find(Alphabet[letter]) == std::string_view::npos)
      ++letter;
    m_Text.Append(letter - place, '\t');
    return letter - place;
  }

  void AppendValue(const XmlNode& cell) {
    XmlNode value = xml::FirstChild(cell);
    while (value && !xml::IsNamed(value, L"v"sv)) value = xml::NextSibling(value);
    if (!value) return;
    const std::string_view text = xml::TextBytes(value, m_Joined);
    if (text.empty()) return;
    if (xml::AttributeBytes(cell, L"t"sv) == "s")
      m_Text.Append(m_Strings.Find(os::Int32FromText(text)));
    else
      AppendNumber(m_Text, text);
  }

  const SharedStrings& m_Strings;
  SheetText& m_Text;
  std::string m_Joined;
  int m_DataDepth = 1;  // of "sheetData"
  bool m_HasWorksheet = false;
  bool m_HasData = false;
};

}  // namespace

ExcelSheetResult AppendExcelSheet(std::wstring_view path, const SharedStrings& strings,
                                  SheetText& text) {
  const std::size_t before = text.Size();
  SheetReader reader(strings, text);
  const bool isDocument = xml::StreamXmlFile(path, reader);
  if (isDocument && reader.HasData()) {
    text.TrimRight("\n");
    return ExcelSheetResult::Appended;
  }
  if (isDocument)
    xml::ReportXmlFailure({.where = os::Utf8FromWide(path), .why = "there is no \"sheetData\""});
  const bool isOverLimit = text.IsOverLimit();
  text.Truncate(before);
  return isOverLimit ? ExcelSheetResult::OverLimit : ExcelSheetResult::Refused;
}

}  // namespace rastrel::readers
