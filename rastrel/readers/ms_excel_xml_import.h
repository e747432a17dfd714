#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"

namespace rastrel::readers {
class ExcelPackage;
}

/// A file of an unpacked Excel package, named by the host.
struct tagEXCEL_XML_FILE {
  /// Room for a path, its terminator among it.
  static constexpr std::size_t PathSize = 4096;

  std::int32_t type = 0;        ///< 1 workbook, 2 its relationships, 3 shared strings
  wchar_t path[PathSize] = {};  ///< full path (library text, see platform/os/path.h)
};

/// Makes one tab-separated text of all sheets of an Excel workbook (SpreadsheetML, ECMA-376 Part 1,
/// of which docs/formats/spreadsheet-text.md tells what is read). The package is a folder, unpacked
/// by the host. The text goes to "content.txt" in it: UTF-8 with a byte-order mark, lines ended by
/// CR LF, a tab behind each cell.
///
/// An object serves one import: saving turns the folder that it holds into the path of the text, so
/// a second run looks in the wrong place and fails.
///
/// Failures are a false result, and the reason stands in the application log. Sheets are read as a
/// stream: memory is a small part of what the document would take, and bounded
/// (readers/sheet_limits.h); beyond the bounds the import fails. Nothing outside the folder is read
/// but the files of the list, and nothing is written but the text. One thread at a time.
class RASTREL_API CMSExcelXMLImport {
 public:
  /// Keeps a copy of the package's folder, with no separator at its end; null is an empty one.
  explicit CMSExcelXMLImport(const wchar_t* folder);
  CMSExcelXMLImport(const CMSExcelXMLImport&) = delete;
  CMSExcelXMLImport& operator=(const CMSExcelXMLImport&) = delete;
  virtual ~CMSExcelXMLImport();

  /// The whole import. Reads the files in their order, then the sheets, and writes the text; true
  /// if it was written. The caller keeps the records. False if
  /// - a file does not exist, or a null is among them;
  /// - a workbook or a relationship file is no document, or has another root than "workbook" or
  ///   "Relationships" (shared strings that are none are passed over);
  /// - the first file is of another type than 1 to 3. Behind it, other types are passed over;
  /// - ProcessExcelSheets or SaveDataToFile fails.
  /// Several files of a type add to one another, but each one of shared strings begins at index 0.
  bool ParseXmlFiles(std::vector<tagEXCEL_XML_FILE*> files);
  /// Appends the sheets in the workbook's order. The second begins on the last line of the first.
  /// False if the first fails, or if the text passes its limit; later sheets that fail are passed
  /// over. True also if there are none. A sheet fails if it is not below the folder (a target with
  /// "..", or a link on the way), is no whole document, or has no "sheetData".
  bool ProcessExcelSheets();
  /// Type and target of the first relationship with that id (null is an empty one); both are left
  /// as they are if there is none. Always true.
  bool GetTargetSheet(const wchar_t* id, CString& type, CString& target);
  /// Writes the text, without the white space at both of its ends. False if the folder is empty, if
  /// there is no text, or if the file can't be made or written to its end.
  bool SaveDataToFile();
  /// Frees what was read of workbook and relationships. The destructor does it, too.
  void ClearExcelObjects();

 private:
  std::unique_ptr<rastrel::readers::ExcelPackage> m_Package;
};
