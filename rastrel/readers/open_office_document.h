#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "rastrel/readers/open_office_tables.h"
#include "rastrel/readers/sheet_limits.h"

struct tagOPEN_OFFICE_DATA;

namespace rastrel::readers {

/// The tables of COpenOfficeXMLImport (open_office_xml_import.h): as short as they were read, or as
/// the records that a host walks once it has asked for them. One thread.
class OpenOfficeDocument {
 public:
  explicit OpenOfficeDocument(const SheetLimits& limits = {});
  ~OpenOfficeDocument();
  OpenOfficeDocument(const OpenOfficeDocument&) = delete;
  OpenOfficeDocument& operator=(const OpenOfficeDocument&) = delete;

  /// Appends the tables of a file as OpenOfficeTables::Read does, after the checks of the path that
  /// COpenOfficeXMLImport::ParseFile describes.
  [[nodiscard]] bool ParseFile(std::wstring_view path);
  /// The record of a table; null if there is none of that number, or if the records of all tables
  /// would pass their limit, which is reported (xml/failure.h).
  [[nodiscard]] tagOPEN_OFFICE_DATA* Record(std::size_t index);
  /// Frees all tables.
  void Clear();

  /// Writes the tables as text to a file: a line for each row, a tab after each cell, without the
  /// line feeds at the end and the whitespace at both ends. True if it was written; false if the
  /// text or the name is empty.
  [[nodiscard]] bool SaveText(std::wstring_view name) const;

 private:
  [[nodiscard]] bool MakeRecords();

  SheetLimits m_Limits;
  std::vector<std::unique_ptr<tagOPEN_OFFICE_DATA>> m_Records;
  std::size_t m_RecordBytes = 0;  // as they count against the limit
  OpenOfficeTables m_Tables;      // those after the records
};

}  // namespace rastrel::readers
