#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/sheet/spreadsheet.h"
#include "rastrel/platform/os/file_descriptor.h"

/// The text of spreadsheets as a person sees them; docs/formats/sheet-text.md has the form.
namespace rastrel::cli::sheet {

/// Appends a cell's text with tabs, line ends, backslashes and other control characters escaped.
void AppendEscaped(std::string& line, std::string_view text);

/// Writes rows to a file.
class RowText : public RowSink {
 public:
  enum class Form {
    Table,  ///< lines with tabs between their cells
    Json,   ///< a JSON object for each row
  };
  /// Makes the file new. With `marks` a line stands in front of each sheet's rows. Throws
  /// CommandError, later also for a text of more than `mostBytes`.
  RowText(const std::string& path, Form form, bool marks,
          std::uint64_t mostBytes = limits::OutputBytes);

  void BeginSheet(const SheetInfo& sheet, std::size_t number) override;
  void Row(std::uint64_t row, std::vector<std::string>& cells) override;
  /// Writes what is still to be written. Throws CommandError.
  void Finish();

 private:
  void Flush();

  std::string m_Path;
  Form m_Form;
  bool m_Marks;
  std::uint64_t m_MaximumBytes;
  os::FileDescriptor m_File;
  std::string m_Text;
  std::string m_Sheet;
  std::uint64_t m_Row = 0;      // the last one that is written
  std::uint64_t m_Written = 0;  // bytes
};

/// Counts what sheets hold.
class RowCounter : public RowSink {
 public:
  struct Size {
    std::uint64_t rows = 0;     ///< place of the last one that is not empty
    std::uint64_t columns = 0;  ///< the same
    std::uint64_t cells = 0;    ///< that are not empty
  };
  void BeginSheet(const SheetInfo& sheet, std::size_t number) override;
  void Row(std::uint64_t row, std::vector<std::string>& cells) override;
  struct Entry {
    SheetInfo sheet;
    std::size_t number = 0;
    Size size;
  };
  [[nodiscard]] const std::vector<Entry>& Sheets() const { return m_Sheets; }

 private:
  std::vector<Entry> m_Sheets;
};

}  // namespace rastrel::cli::sheet
