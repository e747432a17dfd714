#include "rastrel/readers/open_office_document.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <utility>

#include "rastrel/imports/file_extension.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/cell_value.h"
#include "rastrel/readers/open_office_xml_import.h"
#include "rastrel/readers/trimmed_text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::readers {
namespace {

// The overhead of one allocation, in bytes.
constexpr std::size_t AllocationCost = 16;

// Bytes that the records of a table would take.
std::size_t RecordSize(OpenOfficeTables::Walk table) {
  std::size_t size = sizeof(tagOPEN_OFFICE_DATA);
  OpenOfficeTables::Item item;
  while (table.Next(item)) {
    std::size_t one = item.repeat == 0 ? sizeof(tagTABLE_TABLE_ROW) + AllocationCost
                                       : sizeof(tagTABLE_TABLE_CELL);
    if (!item.text.empty()) one += AllocationCost + (item.text.size() + 1) * sizeof(wchar_t);
    size += one * std::max<std::size_t>(item.repeat, 1);
  }
  return size;
}

std::unique_ptr<wchar_t[]> CopyOf(const std::wstring& text) {
  auto copy = std::make_unique_for_overwrite<wchar_t[]>(text.size() + 1);
  std::copy_n(text.c_str(), text.size() + 1, copy.get());
  return copy;
}

// A row's cells are counted ahead of being made, so that no list has room to spare.
std::size_t CountCells(OpenOfficeTables::Walk rest) {
  std::size_t count = 0;
  OpenOfficeTables::Item item;
  while (rest.Next(item) && item.repeat > 0) count += item.repeat;
  return count;
}

std::size_t CountRows(OpenOfficeTables::Walk table) {
  std::size_t count = 0;
  OpenOfficeTables::Item item;
  while (table.Next(item)) count += item.repeat == 0 ? 1 : 0;
  return count;
}

std::unique_ptr<tagOPEN_OFFICE_DATA> MakeRecord(OpenOfficeTables::Walk table) {
  auto record = std::make_unique<tagOPEN_OFFICE_DATA>();
  record->m_Rows.reserve(CountRows(table));
  OpenOfficeTables::Item item;
  while (table.Next(item)) {
    if (item.repeat == 0) {
      record->m_Rows.emplace_back().m_Cells.reserve(CountCells(table));
      continue;
    }
    std::vector<tagTABLE_TABLE_CELL>& cells = record->m_Rows.back().m_Cells;
    const std::wstring text = os::WideFromUtf8(item.text);
    for (std::uint32_t repeat = item.repeat; repeat > 0; --repeat) {
      cells.emplace_back();
      if (!text.empty()) cells.back().m_Text = CopyOf(text);
    }
  }
  return record;
}

// The tables as one text. After each row dots and spaces are taken off the text's end, which never
// finds any: a tab follows each cell and a line feed each row, and the tab is there for that.
// Entities are replaced cell by cell, with the same result as in the whole text: none
// of them reaches over a tab, and none becomes whitespace.
class Flattening {
 public:
  explicit Flattening(std::wstring_view name) : m_Text(name) {}

  void Append(const tagOPEN_OFFICE_DATA& table) {
    for (const tagTABLE_TABLE_ROW& row : table.m_Rows) {
      for (const tagTABLE_TABLE_CELL& cell : row.m_Cells)
        AppendCells(1, cell.m_Text ? os::Utf8FromWide(cell.m_Text.get()) : std::string());
      EndRow();
    }
  }

  void Append(OpenOfficeTables::Walk table) {
    bool isInRow = false;
    OpenOfficeTables::Item item;
    while (table.Next(item)) {
      if (item.repeat > 0) {
        AppendCells(item.repeat, item.text);
        continue;
      }
      if (isInRow) EndRow();
      isInRow = true;
    }
    if (isInRow) EndRow();
  }

  // The line feeds after the last table go with the whitespace at the end.
  [[nodiscard]] bool Close() { return m_Text.Close(); }

 private:
  // Rows are handed on whole, but for those that repeats make very long.
  static constexpr std::size_t MaximumOfRow = std::size_t{64} << 10;

  void AppendCells(std::size_t repeat, std::string_view text) {
    if (text.empty()) return AppendTabs(repeat);
    if (ReplaceEntities(text, m_Scratch)) text = m_Scratch;
    for (; repeat > 0; --repeat) {
      m_Row.append(text);
      m_Row += '\t';
      if (m_Row.size() > MaximumOfRow) HandOn();
    }
  }

  void AppendTabs(std::size_t count) {
    if (count <= MaximumOfRow) {
      m_Row.append(count, '\t');
    } else {
      HandOn();
      m_Text.AppendWhitespace(count, '\t');
    }
  }

  void EndRow() {
    m_Row += '\n';
    HandOn();
  }

  void HandOn() {
    m_Text.Append(m_Row);
    m_Row.clear();
  }

  TrimmedText m_Text;
  std::string m_Row;
  std::string m_Scratch;
};

}  // namespace

OpenOfficeDocument::OpenOfficeDocument(const SheetLimits& limits) : m_Limits(limits) {}
OpenOfficeDocument::~OpenOfficeDocument() = default;

bool OpenOfficeDocument::ParseFile(std::wstring_view path) {
  const std::wstring name(path);
  if (!imports::IsFileOfType(name.c_str(), {L"xml"}, imports::ExtensionTrim::Whitespace)) {
    xml::ReportXmlFailure(
        {.where = os::Utf8FromWide(path), .why = "there is no such file of the extension \"xml\""});
    return false;
  }
  return m_Tables.Read(path, m_Limits);
}

tagOPEN_OFFICE_DATA* OpenOfficeDocument::Record(std::size_t index) {
  if (!MakeRecords() || index >= m_Records.size()) return nullptr;
  return m_Records[index].get();
}

bool OpenOfficeDocument::MakeRecords() {
  std::size_t size = m_RecordBytes;
  for (std::size_t index = 0; index < m_Tables.Count(); ++index)
    size += RecordSize(m_Tables.Table(index));
  if (size > m_Limits.records) {
    xml::ReportXmlFailure(FailureOf("the records of the tables take more than " +
                                    std::to_string(m_Limits.records) + " bytes"));
    return false;
  }
  for (std::size_t index = 0; index < m_Tables.Count(); ++index)
    m_Records.push_back(MakeRecord(m_Tables.Table(index)));
  m_RecordBytes = size;
  m_Tables.Clear();
  return true;
}

void OpenOfficeDocument::Clear() {
  m_Records.clear();
  m_RecordBytes = 0;
  m_Tables.Clear();
}

bool OpenOfficeDocument::SaveText(std::wstring_view name) const {
  Flattening text(name);
  for (const auto& record : m_Records) text.Append(*record);
  for (std::size_t index = 0; index < m_Tables.Count(); ++index) text.Append(m_Tables.Table(index));
  return text.Close();
}

}  // namespace rastrel::readers
