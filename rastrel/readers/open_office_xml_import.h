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
/// package, OASIS OpenDocument 1.3, of which docs/formats/spreadsheet-text.md tells what is read).
/// The text has the shape of CMSExcelXMLImport's: UTF-8 with a byte-order mark, CR LF line ends, a
/// tab behind each cell.
///
/// A "plate" here is a table, and nothing is made in the host's document. The document is read as a
/// stream and kept short. The records that GetFirstPlate gives are made only when they are asked
/// for; without that an import needs a small part of their memory. All of it is bounded
/// (readers/sheet_limits.h).
///
/// Failures are 0, false or null, and the reason stands in the application log. One thread at a
/// time.
class RASTREL_API COpenOfficeXMLImport : public CXMLImport {
 public:
  /// Reads the file (library text, see platform/os/path.h) at once. The base keeps the pointer, not
  /// a copy of the path, and what ParseFile gave.
  explicit COpenOfficeXMLImport(const wchar_t* path);
  COpenOfficeXMLImport(const COpenOfficeXMLImport&) = delete;
  COpenOfficeXMLImport& operator=(const COpenOfficeXMLImport&) = delete;
  ~COpenOfficeXMLImport() override;

  /// Names the file that ImportXMLFile writes; null is an empty name. To be called before it.
  void SetDataSaveFileName(const wchar_t* name);
  /// Shows the wait cursor and writes the tables as text. 1 if the file was written; 0 if the file
  /// given at construction could not be read, or SaveDataToFile fails. As often as wanted.
  int ImportXMLFile() override;
  /// Frees all tables. Pointers to them are void then.
  void ClearPlates() override;
  /// The first table, a tagOPEN_OFFICE_DATA of which the object stays the owner, until ClearPlates;
  /// what the host changes in it shows in the text. Null if there is none, or if the records would
  /// take more memory than they may.
  void* GetFirstPlate() override;
  /// The table behind the one last given; null behind the last.
  void* GetNextPlate() override;

  /// Writes a text to the file that was named, without the white space at both of its ends, and
  /// with
  /// "&quot;", "&amp;", "&lt;", "&gt;", "&apos;" replaced by their characters, one kind after the
  /// other in this order. 1, or 0 if nothing is left of the text, no file was named, or it can't be
  /// made or written to its end.
  int SaveDataToFile(const CString& text);

 protected:
  /// Appends the tables of a file. True if there is one. False if the path is null or empty, if the
  /// file does not exist or has another extension than "xml" in any case, if it is no document or
  /// has another root than "document-content", if it holds no table, or if it passes a limit.
  bool ParseFile(const wchar_t* path) override;

 private:
  CString m_SaveName;
  CString m_Unused;  // of the interface's layout; stays empty
  std::unique_ptr<rastrel::readers::OpenOfficeDocument> m_Document;
  std::size_t m_Cursor = 0;
};
