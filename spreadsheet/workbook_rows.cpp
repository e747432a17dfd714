// The rows of a workbook as a person sees them.

#include <charconv>
#include <cmath>
#include <set>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "spreadsheet/error.h"
#include "spreadsheet/iso_date.h"
#include "spreadsheet/part_name.h"
#include "spreadsheet/string_table.h"
#include "spreadsheet/workbook.h"
#include "spreadsheet/workbook_formats.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

using xml::StreamChoice;

std::optional<double> NumberOf(std::string_view text) {
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

// Place of a cell by its reference, as "BC12"; none if it is not of that form.
struct CellPlace {
  std::uint64_t row = 0;
  std::uint64_t column = 0;
};
std::optional<CellPlace> PlaceOf(std::string_view reference) {
  CellPlace place;
  constexpr std::uint64_t tooFar = 1ULL << 40;
  std::size_t at = 0;
  for (; at < reference.size() && reference[at] >= 'A' && reference[at] <= 'Z'; ++at)
    if (place.column < tooFar)
      place.column = place.column * 26 + static_cast<std::uint64_t>(reference[at] - 'A' + 1);
  const auto row = WholeNumber(reference.substr(at));
  if (at == 0 || !row || *row == 0) return std::nullopt;
  place.row = *row;
  return place;
}

class SheetReader : public GuardedHandler {
 public:
  SheetReader(const StringTable& strings, const WorkbookFormats& formats, DateSystem dates,
              RowSink& sink)
      : m_Strings(strings), m_Formats(formats), m_Dates(dates), m_Sink(sink) {}

  [[nodiscard]] bool FoundRoot() const { return m_FoundRoot; }

  StreamChoice Begin(std::wstring_view baseName, const XmlNode& start, int depth) override {
    if (depth == 0) {
      m_FoundRoot = baseName == L"worksheet";
      return m_FoundRoot ? StreamChoice::Enter : StreamChoice::Skip;
    }
    if (depth == 1 && baseName == L"sheetData") return StreamChoice::Enter;
    if (depth != 2 || baseName != L"row") return StreamChoice::Skip;
    TakeRowNumber(xml::AttributeBytes(start, L"r"));
    return StreamChoice::Node;
  }
  void End(std::wstring_view, int) override {}

  void Node(const XmlNode& row) override {
    ReadCells(row);
    while (!m_Cells.empty() && m_Cells.back().empty()) m_Cells.pop_back();
    if (Refused() || m_Cells.empty()) return;
    if (m_Row > limits::Rows)
      return Refuse("row " + std::to_string(m_Row) + " lies behind the last one, " +
                    std::to_string(limits::Rows));
    Guard([this] { OrThrow(m_Sink.Row(m_Row, m_Cells)); });
  }

 private:
  // A row without a number comes after the one before it. Read at the row's begin, so that a
  // refusal has its place.
  void TakeRowNumber(std::string_view number) {
    const std::uint64_t before = m_Row++;
    if (number.empty()) return;
    const auto own = WholeNumber(number);
    if (!own || *own == 0)
      return Refuse("the attribute 'r' of a row is '" + PrintableName(number) +
                    "', and not a whole number from 1 on");
    if (*own <= before)
      return Refuse("the row numbered '" + PrintableName(number) + "' comes after row " +
                    std::to_string(before));
    m_Row = *own;
  }

  void ReadCells(const XmlNode& row) {
    m_Cells.clear();
    std::uint64_t column = 0;
    for (XmlNode cell = xml::FirstChild(row); cell && !Refused(); cell = xml::NextSibling(cell)) {
      if (xml::BaseName(cell) != L"c") continue;
      ++column;
      const std::string_view reference = xml::AttributeBytes(cell, L"r");
      if (const auto place = PlaceOf(reference)) column = place->column;
      if (column > limits::Columns)
        return Refuse("cell '" + PrintableName(reference) + "' of row " + std::to_string(m_Row) +
                      " lies behind the last column, " + ColumnName(limits::Columns));
      if (m_Cells.size() < column) m_Cells.resize(column);
      m_Cells[column - 1] = Show(cell);
      if (m_Cells[column - 1].size() > limits::CellBytes)
        return Refuse("a cell of row " + std::to_string(m_Row) +
                      " has a text longer than the limit of " + std::to_string(limits::CellBytes) +
                      " bytes");
    }
  }

  std::string Show(const XmlNode& cell) {
    const std::string_view type = xml::AttributeBytes(cell, L"t");
    const auto format = WholeNumber(xml::AttributeBytes(cell, L"s"));
    const FormatCode& code = m_Formats.CodeOf(format.value_or(0));
    XmlNode value;
    for (XmlNode child = xml::FirstChild(cell); child; child = xml::NextSibling(child)) {
      const std::wstring_view name = xml::BaseName(child);
      if (name == L"v" && !value) value = child;
      if (name == L"is" && type == "inlineStr") return code.ShowText(StringTable::TextOf(child));
    }
    if (!value) return {};
    if (type == "str") return code.ShowText(StringTable::Unescaped(RawText(value)));
    const std::string_view text = xml::TextBytes(value, m_Scratch);
    if (text.empty() || type == "e" || type == "inlineStr") return std::string(text);
    if (type == "s") return ShowShared(text, code);
    if (type == "b") return ShowBoolean(IsYes(text), code);
    if (type == "d") return ShowIsoDate(text, code, m_Dates);
    const auto number = NumberOf(text);
    return number ? code.ShowNumber(*number, m_Dates) : std::string(text);
  }

  // A format of numbers shows the number that the cell holds.
  std::string ShowBoolean(bool value, const FormatCode& code) const {
    if (code.IsGeneral()) return value ? "TRUE" : "FALSE";
    return code.ShowNumber(value ? 1 : 0, m_Dates);
  }

  std::string_view RawText(const XmlNode& node) { return xml::RawTextBytes(node, m_Scratch); }

  std::string ShowShared(std::string_view text, const FormatCode& code) {
    const auto index = WholeNumber(text);
    if (index && *index < m_Strings.Count()) return code.ShowText(m_Strings.At(*index));
    Refuse("a cell of row " + std::to_string(m_Row) + " asks for the shared string '" +
           PrintableName(text) + "', and there are " + std::to_string(m_Strings.Count()));
    return {};
  }

  const StringTable& m_Strings;
  const WorkbookFormats& m_Formats;
  DateSystem m_Dates;
  RowSink& m_Sink;
  bool m_FoundRoot = false;
  std::uint64_t m_Row = 0;
  std::vector<std::string> m_Cells;
  std::string m_Scratch;
};

// In the order in which they are read.
std::vector<std::string> PartsOf(const Workbook& workbook, int only) {
  std::vector<std::string> parts{workbook.strings, workbook.styles};
  for (std::size_t index = 0; index < workbook.sheets.size(); ++index)
    if ((only < 0 || index == static_cast<std::size_t>(only)) && workbook.sheets[index].hasCells)
      parts.push_back(workbook.sheets[index].part);
  return parts;
}

[[noreturn]] void RefuseSheet(const Parts& parts, const SheetInfo& sheet) {
  Failure failure = FailureOf("the part of sheet '" + PrintableName(sheet.name) +
                              "' is not in the package: '" + PrintableName(sheet.target) + "'");
  failure.where = parts.Name();
  throw Error(std::move(failure));
}

}  // namespace

void ReadWorkbookRows(Parts& parts, const Workbook& workbook, int only, RowSink& sink) {
  static_cast<void>(xml::TakeXmlFailure());
  OrThrow(parts.FetchAhead(PartsOf(workbook, only)));
  const StringTable strings = StringTable::Read(parts, workbook.strings);
  const WorkbookFormats formats = WorkbookFormats::Read(parts, workbook.styles);
  std::set<std::string> read;
  for (std::size_t index = 0; index < workbook.sheets.size(); ++index) {
    const SheetInfo& sheet = workbook.sheets[index];
    if (only >= 0 && index != static_cast<std::size_t>(only)) continue;
    OrThrow(sink.BeginSheet(sheet, index + 1));
    if (!sheet.hasCells) continue;
    if (sheet.part.empty()) RefuseSheet(parts, sheet);
    // A small file could otherwise ask for one large sheet over and over.
    if (!read.insert(sheet.part).second) parts.Refuse(sheet.part, "several sheets share it");
    SheetReader reader(strings, formats, workbook.dates, sink);
    const std::string path = OrThrow(parts.Fetch(sheet.part));
    if (!reader.ReadFrom(path, xml::XmlWhitespace::Keep))
      parts.RefuseXml(sheet.part, "it can't be read");
    if (!reader.FoundRoot()) parts.Refuse(sheet.part, "its root element is not 'worksheet'");
  }
}

}  // namespace rastrel::spreadsheet
