#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "spreadsheet/spreadsheet.h"

/// The text of spreadsheets as a person sees them; docs/formats/sheet-text.md has the form.
namespace rastrel::cli::sheet {

/// Appends a cell's text with tabs, line ends, backslashes and other control characters escaped.
void AppendEscaped(std::string& line, std::string_view text);

/// Maximum size of the whole text in bytes.
inline constexpr std::uint64_t MaximumTextBytes = 4ULL << 30;

/// Writes rows to a file.
class RowText : public spreadsheet::RowSink {
 public:
  enum class Form {
    Table,  ///< lines with tabs between their cells
    Json,   ///< a JSON object for each row
  };
  /// Makes the file new, by its native path. With `marks` a line with the sheet's name precedes the
  /// rows of each sheet. A file that can't be made, or a text of more than `maximumBytes`, fails in
  /// the calls below.
  RowText(std::string path, Form form, bool marks, std::uint64_t maximumBytes = MaximumTextBytes);

  Expected<void> BeginSheet(const spreadsheet::SheetInfo& sheet, std::size_t number) override;
  Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override;
  /// Writes the rest of the text.
  [[nodiscard]] Expected<void> Finish();

 private:
  [[nodiscard]] Expected<void> Flush();

  std::string m_Path;
  Form m_Form;
  bool m_Marks;
  std::uint64_t m_MaximumBytes;
  Expected<os::FileDescriptor> m_File;
  std::string m_Text;
  std::string m_Sheet;
  std::uint64_t m_Row = 0;      // the last one that is written
  std::uint64_t m_Written = 0;  // bytes
};

/// Counts the rows, columns and cells of sheets.
class RowCounter : public spreadsheet::RowSink {
 public:
  struct Size {
    std::uint64_t rows = 0;     ///< place of the last one that is not empty
    std::uint64_t columns = 0;  ///< the same
    std::uint64_t cells = 0;    ///< that are not empty
  };
  Expected<void> BeginSheet(const spreadsheet::SheetInfo& sheet, std::size_t number) override;
  Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override;
  struct Entry {
    spreadsheet::SheetInfo sheet;
    std::size_t number = 0;
    Size size;
  };
  [[nodiscard]] const std::vector<Entry>& Sheets() const { return m_Sheets; }

 private:
  std::vector<Entry> m_Sheets;
};

}  // namespace rastrel::cli::sheet
