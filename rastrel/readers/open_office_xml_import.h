#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/imports/xml_import.h"
#include "rastrel/platform/mfc/string.h"

namespace rastrel::readers {
class OpenOfficeDocument;
}

/// A cell. A repeated one is as many records, each with a text of its own.
struct tagTABLE_TABLE_CELL {
  std::int32_t m_Reserved[3] = {};    ///< always 0
  std::unique_ptr<wchar_t[]> m_Text;  ///< ends in a zero; null if the cell has no text
};

/// A row, which owns its cells.
struct tagTABLE_TABLE_ROW {
  std::int32_t m_Reserved = 0;  ///< always 0
  std::vector<tagTABLE_TABLE_CELL> m_Cells;
};

/// A table, which owns its rows.
struct tagOPEN_OFFICE_DATA {
  static constexpr std::size_t TextSize = 256;  ///< of a text, its terminator among it

  std::int32_t m_Reserved[3] = {};         ///< always 0
  std::int32_t m_FirstNumber = 0;          ///< stays 0
  wchar_t m_FirstText[TextSize] = {};      ///< stays empty
  std::int32_t m_SecondNumber = 0;         ///< stays 0
  wchar_t m_SecondText[TextSize] = {};     ///< stays empty
  std::vector<tagTABLE_TABLE_ROW> m_Rows;  ///< in the document's order
};

/// Makes one tab-separated text of all tables of an OpenOffice spreadsheet ("content.xml" of a
/// package, OASIS OpenDocument 1.3, as far as docs/formats/spreadsheet-text.md goes). The text has
/// the form of CMSExcelXMLImport's: UTF-8 with a byte-order mark, CR LF line ends, and a tab after
/// each cell.
///
/// A "plate" here is a table, and nothing is made in the host's document. The file is read as a
/// stream and kept in a short form. The records that GetFirstPlate returns are made at its first
/// call; without that an import needs a small part of their memory. Beyond the limits of
/// readers/sheet_limits.h an operation fails.
///
/// A failure is 0, false or null, and the reason is in the application log. One thread at a time.
/// Nothing throws but std::bad_alloc.
class RASTREL_API COpenOfficeXMLImport : public CXMLImport {
 public:
  /// Reads the file at a library path (platform/os/path.h) at once. The base keeps the pointer,
  /// not a copy of the path, and the result of ParseFile.
  explicit COpenOfficeXMLImport(const wchar_t* path);
  COpenOfficeXMLImport(const COpenOfficeXMLImport&) = delete;
  COpenOfficeXMLImport& operator=(const COpenOfficeXMLImport&) = delete;
  ~COpenOfficeXMLImport() override;

  /// Sets the library path of the file that ImportXMLFile and SaveDataToFile write; to be called
  /// before them. Null counts as empty, which is the default and under which nothing can be
  /// written.
  void SetDataSaveFileName(const wchar_t* name);
  /// Shows the wait cursor and writes the tables as text. Returns 1 if the file was written; 0 if
  /// the file given at construction could not be read, or if SaveDataToFile would fail. May be
  /// called again, and writes again.
  int ImportXMLFile() override;
  /// Frees all tables. Pointers to them are invalid then.
  void ClearPlates() override;
  /// Returns the first table, a tagOPEN_OFFICE_DATA that the object owns until ClearPlates. Changes
  /// that the host makes to it go into the text. Null if there is none, or if the records of all
  /// tables would pass their limit.
  void* GetFirstPlate() override;
  /// Returns the table after the one returned last; null after the last.
  void* GetNextPlate() override;

  /// Writes a text to the file that was set, without the whitespace at both of its ends. The five
  /// entities "&quot;", "&amp;", "&lt;", "&gt;", "&apos;" are replaced by their characters, one
  /// kind after the other in this order. Returns 1, or 0 if nothing is left of the text, no file
  /// was set, or it can't be made or written to its end.
  int SaveDataToFile(const CString& text);

 protected:
  /// Appends the tables of a file. True if it has one. False, with nothing appended, if the path is
  /// null or empty, if the file does not exist or has another extension than "xml" in any case, if
  /// it is no document or has another root than "document-content", if it has no table, or if it
  /// passes a limit.
  bool ParseFile(const wchar_t* path) override;

 private:
  CString m_SaveName;
  CString m_Unused;  // of the interface's layout; stays empty
  std::unique_ptr<rastrel::readers::OpenOfficeDocument> m_Document;
  std::size_t m_Cursor = 0;
};
