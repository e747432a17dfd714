#include "rastrel/imports/xml_file_import.h"

#include "rastrel/imports/abb_parse.h"
#include "rastrel/imports/abb_run.h"
#include "rastrel/imports/document_host.h"
#include "rastrel/imports/font_type.h"
#include "rastrel/imports/text_placing.h"
#include "rastrel/platform/host/wait_cursor.h"

namespace imports = rastrel::imports;

CXMLFileImport::CXMLFileImport(const wchar_t* fileName) { m_bParsed = ParseFile(fileName); }

CXMLFileImport::~CXMLFileImport() { ClearPlates(); }

bool CXMLFileImport::ParseFile(const wchar_t* fileName) {
  return imports::ParseAbbPlates(fileName, m_Plates);
}

int CXMLFileImport::ImportXMLFile() {
  if (!m_bParsed) return 0;
  const auto document = imports::FindDocumentHost();
  if (!document) return 0;
  BeginWaitCursor();
  imports::AbbRun run(*document, m_Last, m_Text);
  for (const auto& plate : m_Plates) run.Import(*plate);
  return 1;
}

tagABB_PLATE_DATA* CXMLFileImport::GetFirstPlate() {
  m_Place = 0;
  return m_Plates.empty() ? nullptr : m_Plates.front().get();
}

tagABB_PLATE_DATA* CXMLFileImport::GetNextPlate() {
  if (m_Place < m_Plates.size()) ++m_Place;
  return m_Place < m_Plates.size() ? m_Plates[m_Place].get() : nullptr;
}

void CXMLFileImport::ClearPlates() {
  m_Plates.clear();
  m_Place = 0;
}

int CXMLFileImport::StartAddText(const NewWorldPt& first, const NewWorldPt& second,
                                 int marginPercent) {
  return imports::StartCenteredText(m_Text, first, second, marginPercent) ? 1 : 0;
}

void CXMLFileImport::AddText(wchar_t* fontName, double size, const wchar_t* text) {
  imports::PasteText(m_Text, fontName, size, text);
}

rastrel::host::ObjectHandle CXMLFileImport::StopAddText() { return imports::CloseText(m_Text); }

int CXMLFileImport::GetFontType(wchar_t** fontName) { return imports::FontTypeOf(*fontName); }

double CXMLFileImport::CalcAbsoluteFromPercentLeftMargin(int perMille) {
  return imports::AbsoluteFromPercentLeft(m_Text, perMille);
}

double CXMLFileImport::CalcAbsoluteFromPercentRightMargin(int perMille) {
  return imports::AbsoluteFromPercentRight(m_Text, perMille);
}
