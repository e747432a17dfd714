#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rastrel/readers/excel_elements.h"
#include "rastrel/readers/shared_strings.h"
#include "rastrel/readers/sheet_limits.h"
#include "rastrel/readers/sheet_text.h"

struct tagEXCEL_XML_FILE;

namespace rastrel::readers {

/// The work of CMSExcelXMLImport (ms_excel_xml_import.h), whose operations have the same rules,
/// with limits that can be chosen. One thread.
class ExcelPackage {
 public:
  explicit ExcelPackage(std::wstring folder, const SheetLimits& limits = {});

  [[nodiscard]] bool ParseXmlFiles(const std::vector<tagEXCEL_XML_FILE*>& files);
  [[nodiscard]] bool ProcessExcelSheets();
  /// False if no relationship has the id; the outputs are empty then.
  bool FindTarget(std::wstring_view id, std::wstring& type, std::wstring& target) const;
  [[nodiscard]] bool SaveDataToFile();
  void ClearElements();

 private:
  [[nodiscard]] bool ReadFile(const tagEXCEL_XML_FILE& file, bool previous);
  [[nodiscard]] std::wstring PathOfSheet(const ExcelElement& sheet) const;

  std::wstring m_Folder;
  SheetText m_Text;
  SharedStrings m_SharedStrings;
  std::vector<ExcelElement> m_WorkbookElements;
  std::vector<ExcelElement> m_RelationshipElements;
  SheetLimits m_Limits;
};

}  // namespace rastrel::readers
