#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/readers/ms_excel_xml_import.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {

/// An unpacked Excel package for one test, in memory where the system has such a place. It begins
/// with a workbook of the sheets "sheet1" and so on, their relationships, and nothing else.
class ExcelFolder {
 public:
  explicit ExcelFolder(std::size_t sheets = 1) { WriteWorkbook(sheets); }

  [[nodiscard]] const ScratchDirectory& Directory() const { return m_Directory; }
  [[nodiscard]] std::wstring Path() const { return m_Directory.Wide(); }

  void WriteWorkbook(std::size_t sheets) const {
    std::string workbook = "<workbook xmlns:r='r'><sheets>";
    std::string relationships = "<Relationships>";
    for (std::size_t number = 1; number <= sheets; ++number) {
      const std::string digits = std::to_string(number);
      workbook +=
          "<sheet name='S" + digits + "' sheetId='" + digits + "' r:id='rId" + digits + "'/>";
      relationships += "<Relationship Id='rId" + digits +
                       "' Type='worksheet' Target='worksheets/sheet" + digits + ".xml'/>";
    }
    m_Directory.Write("xl/workbook.xml", workbook + "</sheets></workbook>");
    m_Directory.Write("xl/_rels/workbook.xml.rels", relationships + "</Relationships>");
  }
  /// The whole file of a sheet, from 1.
  void WriteSheet(std::string_view document, std::size_t number = 1) const {
    m_Directory.Write("xl/worksheets/sheet" + std::to_string(number) + ".xml", document);
  }
  /// A sheet of the given "row" elements.
  void WriteRows(std::string_view rows, std::size_t number = 1) const {
    WriteSheet("<worksheet><sheetData>" + std::string(rows) + "</sheetData></worksheet>", number);
  }
  /// A table of the given "si" elements.
  void WriteStrings(std::string_view elements) const {
    m_Directory.Write("xl/sharedStrings.xml", "<sst>" + std::string(elements) + "</sst>");
  }

  /// The list that a host passes: the workbook, its relationships, and the shared strings if there
  /// are some. Valid as long as this object.
  std::vector<tagEXCEL_XML_FILE*> Files() {
    m_Files.clear();
    Add(1, "xl/workbook.xml");
    Add(2, "xl/_rels/workbook.xml.rels");
    if (m_Directory.Has("xl/sharedStrings.xml")) Add(3, "xl/sharedStrings.xml");
    return List();
  }
  /// Adds to the list that Files began.
  void Add(int type, std::string_view name) {
    auto file = std::make_unique<tagEXCEL_XML_FILE>();
    file->type = type;
    m_Directory.Wide(name).copy(file->path, tagEXCEL_XML_FILE::PathSize - 1);
    m_Files.push_back(std::move(file));
  }
  [[nodiscard]] std::vector<tagEXCEL_XML_FILE*> List() const {
    std::vector<tagEXCEL_XML_FILE*> list;
    for (const auto& file : m_Files) list.push_back(file.get());
    return list;
  }

  /// Imports it. The text without its mark and with plain line ends, or nothing if the import
  /// returned false; an earlier text is removed before.
  std::optional<std::string> Import() { return Import(Files()); }
  std::optional<std::string> Import(const std::vector<tagEXCEL_XML_FILE*>& files) const {
    std::filesystem::remove(m_Directory.Path("content.txt"));
    CMSExcelXMLImport import(Path().c_str());
    if (!import.ParseXmlFiles(files)) return std::nullopt;
    return PlainText(m_Directory.Read("content.txt"));
  }
  /// The text of a sheet of the given rows.
  std::optional<std::string> ImportRows(std::string_view rows) {
    WriteRows(rows);
    return Import();
  }

  /// A text file of the import as text alone; "(no mark)" or "(bare line feed)" if it is none.
  static std::string PlainText(std::string_view bytes) {
    if (!bytes.starts_with("\xEF\xBB\xBF")) return "(no mark)";
    std::string text;
    for (std::size_t at = 3; at < bytes.size(); ++at) {
      if (bytes[at] == '\n' && bytes[at - 1] != '\r') return "(bare line feed)";
      if (bytes[at] != '\r') text += bytes[at];
    }
    return text;
  }

 private:
  MemoryScratchDirectory m_Directory;
  std::vector<std::unique_ptr<tagEXCEL_XML_FILE>> m_Files;
};

}  // namespace rastrel::test
