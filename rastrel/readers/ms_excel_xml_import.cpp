#include "rastrel/readers/ms_excel_xml_import.h"

#include "rastrel/readers/excel_package.h"

CMSExcelXMLImport::CMSExcelXMLImport(const wchar_t* folder)
    : m_Package(
          std::make_unique<rastrel::readers::ExcelPackage>(folder != nullptr ? folder : L"")) {}

CMSExcelXMLImport::~CMSExcelXMLImport() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the list by value
bool CMSExcelXMLImport::ParseXmlFiles(std::vector<tagEXCEL_XML_FILE*> files) {
  return m_Package->ParseXmlFiles(files);
}

bool CMSExcelXMLImport::ProcessExcelSheets() { return m_Package->ProcessExcelSheets(); }

bool CMSExcelXMLImport::GetTargetSheet(const wchar_t* id, CString& type, CString& target) {
  m_Package->FindTarget(id != nullptr ? id : L"", type, target);
  return true;
}

bool CMSExcelXMLImport::SaveDataToFile() { return m_Package->SaveDataToFile(); }

void CMSExcelXMLImport::ClearExcelObjects() { m_Package->ClearElements(); }
