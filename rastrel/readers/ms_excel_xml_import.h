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
/// as far as docs/formats/spreadsheet-text.md goes). The package is a folder, unpacked by the host.
/// The text goes to "content.txt" in it: UTF-8 with a byte-order mark, CR LF line ends, and a tab
/// after each cell. A file of that name is replaced.
///
/// An object serves one import: saving replaces the folder that it holds by the path of the text,
/// so a second import looks in the wrong place and fails.
///
/// A failure is a false result, and the reason is in the application log. Sheets are read as a
/// stream, in a small part of the memory that their documents would take. Beyond the limits of
/// readers/sheet_limits.h the import fails. Outside the folder only the files of the list are read,
/// and only the text is written. One thread at a time. Nothing throws but std::bad_alloc.
class RASTREL_API CMSExcelXMLImport {
 public:
  /// Keeps a copy of the package's folder, a library path (platform/os/path.h) without a separator
  /// at its end. Null counts as empty, and nothing can be saved then.
  explicit CMSExcelXMLImport(const wchar_t* folder);
  CMSExcelXMLImport(const CMSExcelXMLImport&) = delete;
  CMSExcelXMLImport& operator=(const CMSExcelXMLImport&) = delete;
  virtual ~CMSExcelXMLImport();

  /// The whole import. Reads the files in their order, then the sheets, and writes the text; true
  /// if it was written. The caller keeps the records. False if
  /// - a file does not exist, or a null is among them;
  /// - a workbook or a relationship file is no document, or has another root than "workbook" or
  ///   "Relationships" (shared strings that are none are passed over);
  /// - the first file is of another type than 1 to 3; later files of other types are passed over;
  /// - ProcessExcelSheets or SaveDataToFile fails.
  /// Several files of a type add to one another, but each one of shared strings begins at index 0.
  bool ParseXmlFiles(std::vector<tagEXCEL_XML_FILE*> files);
  /// Appends the sheets in the workbook's order. Each begins on the last line of the one before.
  /// False if the first sheet fails, or if the text passes its limit; later sheets that fail are
  /// passed over. Also true if there are no sheets. A sheet fails if it is not below the folder (a
  /// target with "..", or a link on the way), is no whole document, or has no "sheetData".
  bool ProcessExcelSheets();
  /// Sets `type` and `target` to those of the first relationship with that id; both are unchanged
  /// if there is none. A null id counts as empty. Always true.
  bool GetTargetSheet(const wchar_t* id, CString& type, CString& target);
  /// Writes the text without the whitespace at both of its ends. False if the folder is empty, if
  /// there is no text, or if the file can't be made or written to its end.
  bool SaveDataToFile();
  /// Frees the elements of the workbook and its relationships. So does the destructor.
  void ClearExcelObjects();

 private:
  std::unique_ptr<rastrel::readers::ExcelPackage> m_Package;
};
