#include "rastrel/readers/excel_package.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/inside.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/excel_sheet.h"
#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/readers/text_file.h"
#include "rastrel/xml/failure.h"

namespace rastrel::readers {
namespace {

constexpr std::int32_t Workbook = 1;
constexpr std::int32_t Relationships = 2;
constexpr std::int32_t SharedStringTable = 3;

constexpr std::wstring_view ResultName = L"\\content.txt";

void Report(std::wstring_view path, std::string why) {
  xml::ReportXmlFailure({.where = os::Utf8FromWide(path), .why = std::move(why)});
}

// The path of the field, which need not be terminated where it is full.
std::wstring PathOf(const tagEXCEL_XML_FILE& file) {
  return {file.path, std::find(std::begin(file.path), std::end(file.path), L'\0')};
}

bool HasParentFolder(std::wstring_view target) {
  while (true) {
    const std::size_t separator = target.find_first_of(L"/\\");
    if (target.substr(0, separator) == L"..") return true;
    if (separator == std::wstring_view::npos) return false;
    target.remove_prefix(separator + 1);
  }
}

// Whether a part of the package may be read or written. Anything but a plain file of the package
// counts as absent, and is reported.
bool StaysInside(std::wstring_view folder, std::wstring_view rest) {
  if (HasParentFolder(rest)) {
    Report(std::wstring(folder) + std::wstring(rest), "leads out of the package");
    return false;
  }
  const std::optional<std::string> foreign = os::ForeignBelow(folder, rest);
  if (foreign)
    Report(os::FromNative(*foreign), "is a link or a special file, which no package has");
  return !foreign;
}

}  // namespace

ExcelPackage::ExcelPackage(std::wstring folder, const SheetLimits& limits)
    : m_Folder(std::move(folder)),
      m_Text(limits.resultText),
      m_SharedStrings(limits),
      m_Limits(limits) {}

bool ExcelPackage::ParseXmlFiles(const std::vector<tagEXCEL_XML_FILE*>& files) {
  ClearElements();
  m_SharedStrings.Clear();
  m_Text.Clear();
  bool result = false;
  for (const tagEXCEL_XML_FILE* const file : files) {
    result = file != nullptr && ReadFile(*file, result);
    if (!result) return false;
  }
  return ProcessExcelSheets() && SaveDataToFile();
}

// A type that is none has the result of the file before.
bool ExcelPackage::ReadFile(const tagEXCEL_XML_FILE& file, bool previous) {
  const std::wstring path = PathOf(file);
  if (path.empty() || !os::Exists(path)) {
    Report(path, "there is no such file");
    return false;
  }
  switch (file.type) {
    case Workbook:
      return ReadExcelElements(path, {L"workbook", L"sheets", L"sheet"}, m_Limits,
                               m_WorkbookElements);
    case Relationships:
      return ReadExcelElements(path, {L"Relationships", L"Relationship", {}}, m_Limits,
                               m_RelationshipElements);
    case SharedStringTable: return m_SharedStrings.Read(path);
    default: return previous;
  }
}

bool ExcelPackage::ProcessExcelSheets() {
  bool hasSucceeded = false;
  for (const ExcelElement& sheet : m_WorkbookElements) {
    if (sheet.m_Name != L"sheet") continue;
    const std::wstring path = PathOfSheet(sheet);
    const ExcelSheetResult result =
        path.empty() ? ExcelSheetResult::Refused : AppendExcelSheet(path, m_SharedStrings, m_Text);
    // A text that lacks a sheet for its size would look like a whole one.
    if (result == ExcelSheetResult::OverLimit) return false;
    hasSucceeded = hasSucceeded || result == ExcelSheetResult::Appended;
    if (!hasSucceeded) return false;
  }
  return true;
}

// Where the sheet's relationship leads; empty if there is nothing, or nothing inside the package. A
// target that begins with a slash is looked for below "xl" like any other.
std::wstring ExcelPackage::PathOfSheet(const ExcelElement& sheet) const {
  std::wstring type;
  std::wstring target;
  const std::wstring id = sheet.Value(L"id");
  if (!FindTarget(id, type, target))
    Report(m_Folder, "no relationship has the id \"" + os::Utf8FromWide(id) + "\" of the sheet \"" +
                         os::Utf8FromWide(sheet.Value(L"name")) + "\"");

  const std::wstring rest = L"\\xl\\" + target;
  if (!StaysInside(m_Folder, rest)) return {};
  std::wstring path = m_Folder + rest;
  if (os::Exists(path)) return path;
  Report(path, "there is no such file");
  return {};
}

bool ExcelPackage::FindTarget(std::wstring_view id, std::wstring& type,
                              std::wstring& target) const {
  const auto found = std::find_if(m_RelationshipElements.begin(), m_RelationshipElements.end(),
                                  [id](const ExcelElement& one) {
                                    return one.m_Name == L"Relationship" && one.Value(L"Id") == id;
                                  });
  if (found == m_RelationshipElements.end()) return false;
  type = found->Value(L"Type");
  target = found->Value(L"Target");
  return true;
}

// The name is appended to the folder itself, so an object makes one text only.
bool ExcelPackage::SaveDataToFile() {
  if (m_Folder.empty()) return false;
  const auto [begin, end] = m_Text.TrimmedRange();
  if (begin == end) return false;
  const bool isInside = StaysInside(m_Folder, ResultName);
  m_Folder += ResultName;
  if (!isInside) return false;
  TextFile file(m_Folder);
  m_Text.ForEachPiece(begin, end, [&file](std::string_view piece) { return file.Write(piece); });
  return file.Close();
}

void ExcelPackage::ClearElements() {
  m_WorkbookElements.clear();
  m_RelationshipElements.clear();
}

}  // namespace rastrel::readers
