#include "rastrel/readers/open_office_xml_import.h"

#include <string>

#include "rastrel/platform/host/wait_cursor.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/cell_value.h"
#include "rastrel/readers/open_office_document.h"
#include "rastrel/readers/trimmed_text.h"

COpenOfficeXMLImport::COpenOfficeXMLImport(const wchar_t* path)
    : CXMLImport(path), m_Document(std::make_unique<rastrel::readers::OpenOfficeDocument>()) {
  m_bParsed = COpenOfficeXMLImport::ParseFile(path);
}

COpenOfficeXMLImport::~COpenOfficeXMLImport() = default;

void COpenOfficeXMLImport::SetDataSaveFileName(const wchar_t* name) {
  m_SaveName = name != nullptr ? name : L"";
}

int COpenOfficeXMLImport::ImportXMLFile() {
  if (!m_bParsed) return 0;
  BeginWaitCursor();
  return m_Document->SaveText(m_SaveName) ? 1 : 0;
}

void COpenOfficeXMLImport::ClearPlates() {
  m_Document->Clear();
  m_Cursor = 0;
}

void* COpenOfficeXMLImport::GetFirstPlate() {
  m_Cursor = 0;
  return m_Document->Record(m_Cursor);
}

void* COpenOfficeXMLImport::GetNextPlate() {
  void* const table = m_Document->Record(m_Cursor + 1);
  if (table != nullptr) ++m_Cursor;
  return table;
}

int COpenOfficeXMLImport::SaveDataToFile(const CString& text) {
  const std::string bytes = rastrel::os::Utf8FromWide(text);
  std::string replaced;
  const bool isReplaced = rastrel::readers::ReplaceEntities(bytes, replaced);
  rastrel::readers::TrimmedText file(m_SaveName);
  file.Append(isReplaced ? replaced : bytes);
  return file.Close() ? 1 : 0;
}

bool COpenOfficeXMLImport::ParseFile(const wchar_t* path) {
  return m_Document->ParseFile(path != nullptr ? path : L"");
}
