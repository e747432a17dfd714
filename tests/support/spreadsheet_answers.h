#pragma once

#include <string>

#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/readers/open_office_xml_import.h"
#include "tests/support/excel_folder.h"
#include "tests/support/literal_spreadsheets.h"

/// Shipped and literal imports side by side.
namespace rastrel::test {

/// The differences for the package as it is; empty if there are none.
inline std::string DifferenceFromLiteral(ExcelFolder& folder) {
  std::filesystem::remove(folder.Directory().Path("content.txt"));
  LiteralExcelImport literal(folder.Path());
  const bool expected = literal.ParseXmlFiles(folder.Files());
  CMSExcelXMLImport shipped(folder.Path().c_str());
  const bool result = shipped.ParseXmlFiles(folder.Files());
  if (result != expected) return "the result is " + std::to_string(result);
  const std::string written = folder.Directory().Read("content.txt");
  if (written == literal.m_Written) return {};
  return "written: " + written + "\nexpected: " + literal.m_Written;
}

/// The differences for an OpenOffice document, as text and as records; empty if there are none.
inline std::string DifferenceFromLiteralOpenOffice(const ScratchDirectory& directory) {
  std::filesystem::remove(directory.Path("out.txt"));
  const std::wstring path = directory.Wide("content.xml");
  LiteralOpenOfficeImport literal(path);
  const int expected = literal.ImportXMLFile();
  COpenOfficeXMLImport shipped(path.c_str());
  shipped.SetDataSaveFileName(directory.Wide("out.txt").c_str());
  if (shipped.ImportXMLFile() != expected) return "the result is not " + std::to_string(expected);
  if (directory.Read("out.txt") != literal.m_Written)
    return "written: " + directory.Read("out.txt") + "\nexpected: " + literal.m_Written;

  std::vector<LiteralOpenOfficeImport::Table> tables;
  for (void* plate = shipped.GetFirstPlate(); plate != nullptr; plate = shipped.GetNextPlate()) {
    tables.emplace_back();
    for (const tagTABLE_TABLE_ROW& row : static_cast<tagOPEN_OFFICE_DATA*>(plate)->m_Rows) {
      tables.back().emplace_back();
      for (const tagTABLE_TABLE_CELL& cell : row.m_Cells)
        tables.back().back().emplace_back(cell.m_Text ? cell.m_Text.get() : L"");
    }
  }
  if (tables != literal.m_Tables) return "the records differ";
  if (shipped.ImportXMLFile() != expected || directory.Read("out.txt") != literal.m_Written)
    return "the text of the records differs";
  return {};
}

}  // namespace rastrel::test
