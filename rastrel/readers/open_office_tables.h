#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/readers/sheet_limits.h"

namespace rastrel::readers {

/// The tables of an OpenOffice spreadsheet (OASIS OpenDocument 1.3, part 3, 9.1) in their order,
/// kept as short as the document has them: a repeated cell is stored once, with its count. All text
/// is UTF-8.
class OpenOfficeTables {
 public:
  /// A cell or the begin of a row.
  struct Item {
    std::uint32_t repeat = 0;  ///< how many cells; 0: a row begins
    std::string_view text;     ///< of each of them; empty if the cell has none
  };

  /// Walks a table.
  class Walk {
   public:
    explicit Walk(std::string_view bytes) : m_Bytes(bytes) {}
    /// Takes the next item; false at the table's end.
    [[nodiscard]] bool Next(Item& item);

   private:
    std::uint32_t TakeNumber();
    std::string_view m_Bytes;
  };

  /// Appends the tables of a file. The rows are the "table-row" children of a table, the cells the
  /// "table-cell" children of a row as often as "table:number-columns-repeated" says; a cell's text
  /// is its last "p" that is not empty. Rows come once, whatever their repeat count.
  ///
  /// True if there is a table. False, and nothing is appended, if there is none, if the file can't
  /// be read or is no document, if its root is not "document-content", or if it passes a limit; the
  /// reason is reported (xml/failure.h).
  [[nodiscard]] bool Read(std::wstring_view path, const SheetLimits& limits);

  [[nodiscard]] std::size_t Count() const { return m_Begins.size(); }
  [[nodiscard]] Walk Table(std::size_t index) const;
  void Clear();

 private:
  class Reader;
  void AppendNumber(std::uint32_t number);

  std::string m_Bytes;                // items: repeat, and if it is not 0 length and text
  std::vector<std::size_t> m_Begins;  // of each table in m_Bytes
  std::uint64_t m_Cells = 0;
  std::uint64_t m_ResultText = 0;  // bytes of the text that the tables become
};

}  // namespace rastrel::readers
