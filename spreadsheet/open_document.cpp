#include "spreadsheet/open_document.h"

#include <functional>
#include <set>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"
#include "spreadsheet/error.h"
#include "spreadsheet/open_document_cell.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

using xml::StreamChoice;

// Walks down to the tables and their rows. The root has one name in packages and another in flat
// files.
class TableReader : public GuardedHandler {
 public:
  TableReader(int only, bool withRows) : m_Only(only), m_WithRows(withRows) {}

  [[nodiscard]] bool FoundRoot() const { return m_FoundRoot; }
  [[nodiscard]] bool FoundSpreadsheet() const { return m_FoundSpreadsheet; }

  StreamChoice Begin(std::wstring_view baseName, const XmlNode& start, int depth) override {
    switch (depth) {
      case 0:
        m_FoundRoot = baseName == L"document-content" || baseName == L"document";
        return m_FoundRoot ? StreamChoice::Enter : StreamChoice::Skip;
      case 1:
        if (baseName == L"automatic-styles") return StreamChoice::Enter;
        return baseName == L"body" ? StreamChoice::Enter : StreamChoice::Skip;
      case 2:
        if (baseName == L"style" && IsTableStyle(start)) return StreamChoice::Node;
        if (baseName != L"spreadsheet") return StreamChoice::Skip;
        m_FoundSpreadsheet = true;
        return StreamChoice::Enter;
      case 3: return baseName == L"table" ? BeginTable(start) : StreamChoice::Skip;
      default: return BeginInTable(baseName);
    }
  }

  void Node(const XmlNode& node) override {
    if (xml::BaseName(node) == L"style")
      TakeStyle(node);
    else
      Row(node);
  }
  void End(std::wstring_view, int) override {}

 protected:
  virtual void Table(const SheetInfo& sheet, std::size_t number) = 0;
  virtual void Row(const XmlNode& row) { static_cast<void>(row); }

 private:
  static bool IsTableStyle(const XmlNode& style) {
    return xml::AttributeBytes(style, L"style:family") == "table";
  }

  void TakeStyle(const XmlNode& style) {
    for (XmlNode child = xml::FirstChild(style); child; child = xml::NextSibling(child))
      if (xml::AttributeBytes(child, L"table:display") == "false")
        m_Hidden.emplace(xml::AttributeBytes(style, L"style:name"));
    if (m_Hidden.size() > limits::Formats) Refuse("there are too many styles of hidden tables");
  }

  StreamChoice BeginTable(const XmlNode& start) {
    if (++m_Tables > limits::Sheets) {
      Refuse("there are more sheets than the limit of " + std::to_string(limits::Sheets));
      return StreamChoice::Skip;
    }
    if (m_Only >= 0 && m_Tables != static_cast<std::size_t>(m_Only) + 1) return StreamChoice::Skip;
    SheetInfo sheet;
    sheet.name = xml::AttributeBytes(start, L"table:name");
    const std::string style(xml::AttributeBytes(start, L"table:style-name"));
    if (m_Hidden.contains(style)) sheet.visibility = Visibility::Hidden;
    Table(sheet, m_Tables);
    return m_WithRows ? StreamChoice::Enter : StreamChoice::Skip;
  }

  static StreamChoice BeginInTable(std::wstring_view baseName) {
    if (baseName == L"table-row") return StreamChoice::Node;
    const bool holdsRows = baseName == L"table-header-rows" || baseName == L"table-rows" ||
                           baseName == L"table-row-group";
    return holdsRows ? StreamChoice::Enter : StreamChoice::Skip;
  }

  int m_Only;
  bool m_WithRows;
  bool m_FoundRoot = false;
  bool m_FoundSpreadsheet = false;
  std::size_t m_Tables = 0;
  std::set<std::string, std::less<>> m_Hidden;  // names of styles
};

class SheetLister : public TableReader {
 public:
  SheetLister() : TableReader(-1, false) {}
  [[nodiscard]] std::vector<SheetInfo>& Sheets() { return m_Sheets; }

 private:
  void Table(const SheetInfo& sheet, std::size_t) override { m_Sheets.push_back(sheet); }
  std::vector<SheetInfo> m_Sheets;
};

class RowReader : public TableReader {
 public:
  RowReader(int only, RowSink& sink) : TableReader(only, true), m_Sink(sink) {}

 private:
  void Table(const SheetInfo& sheet, std::size_t number) override {
    m_Row = 0;
    Guard([&] { OrThrow(m_Sink.BeginSheet(sheet, number)); });
  }

  void Row(const XmlNode& row) override {
    const std::uint64_t repeats = RepeatsOf(row, L"table:number-rows-repeated");
    ReadCells(row);
    if (Refused()) return;
    if (m_Cells.empty()) {
      m_Row += repeats;
      return;
    }
    if (repeats > limits::Rows || m_Row + repeats > limits::Rows)
      return Refuse("row " + std::to_string(m_Row + 1) + " comes " + std::to_string(repeats) +
                    " times, and the last row is " + std::to_string(limits::Rows));
    CountRepeats((repeats - 1) * m_Cells.size());
    for (std::uint64_t time = 0; time < repeats && !Refused(); ++time) {
      m_Copy = m_Cells;
      Guard([this] { OrThrow(m_Sink.Row(++m_Row, m_Copy)); });
    }
  }

  void ReadCells(const XmlNode& row) {
    m_Cells.clear();
    std::uint64_t column = 0;
    for (XmlNode cell = xml::FirstChild(row); cell && !Refused(); cell = xml::NextSibling(cell)) {
      if (xml::BaseName(cell) != L"table-cell") {
        if (xml::BaseName(cell) == L"covered-table-cell")
          column += RepeatsOf(cell, L"table:number-columns-repeated");
        continue;
      }
      const std::uint64_t repeats = RepeatsOf(cell, L"table:number-columns-repeated");
      AddCell(cell, column, repeats);
      column += repeats;
    }
  }

  void AddCell(const XmlNode& cell, std::uint64_t column, std::uint64_t repeats) {
    std::string text;
    const std::wstring why = ShowOpenDocumentCell(cell, text);
    if (!why.empty())
      return Refuse("row " + std::to_string(m_Row + 1) + ": " + os::Utf8FromWide(why));
    if (text.empty()) return;
    if (column > limits::Columns || repeats > limits::Columns || column + repeats > limits::Columns)
      return Refuse("row " + std::to_string(m_Row + 1) + " has a cell that comes " +
                    std::to_string(repeats) + " times behind " + std::to_string(column) +
                    " others, and the limit is " + std::to_string(limits::Columns) + " columns");
    CountRepeats(repeats - 1);
    m_Cells.resize(column);
    m_Cells.insert(m_Cells.end(), repeats, text);
  }

  void CountRepeats(std::uint64_t cells) {
    m_Repeated += cells;
    if (m_Repeated > limits::RepeatedCells)
      Refuse("repeats make more cells than the limit of " + std::to_string(limits::RepeatedCells));
  }

  RowSink& m_Sink;
  std::uint64_t m_Row = 0;
  std::uint64_t m_Repeated = 0;
  std::vector<std::string> m_Cells;
  std::vector<std::string> m_Copy;
};

void Read(const XmlPlace& document, TableReader& reader) {
  static_cast<void>(xml::TakeXmlFailure());
  if (!reader.ReadFrom(document.path, xml::XmlWhitespace::Keep)) RefuseDocument(document);
  if (!reader.FoundRoot() || !reader.FoundSpreadsheet()) RefuseOtherKind(document);
}

}  // namespace

void RefuseDocument(const XmlPlace& document) {
  throw Error(TakeXmlFailureAt(document.name, "it can't be read"));
}

void RefuseOtherKind(const XmlPlace& document) {
  Failure failure = FailureOf("it is no spreadsheet");
  failure.where = document.name;
  throw Error(std::move(failure));
}

std::vector<SheetInfo> ReadOpenDocumentSheets(const XmlPlace& document) {
  SheetLister lister;
  Read(document, lister);
  return std::move(lister.Sheets());
}

void ReadOpenDocumentRows(const XmlPlace& document, int only, RowSink& sink) {
  RowReader reader(only, sink);
  Read(document, reader);
}

}  // namespace rastrel::spreadsheet
