#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

/// Spreadsheets as their users see them: sheets of rows of cells, whatever the file's format. Text
/// is UTF-8.
namespace rastrel::spreadsheet {

/// The limits of one spreadsheet. Beyond any of these it is refused, and the failure names the
/// limit and the place. Rows and columns are those of the programs that make spreadsheets.
namespace limits {
inline constexpr std::uint64_t Rows = 1'048'576;
inline constexpr std::uint64_t Columns = 16'384;
inline constexpr std::size_t Sheets = 4096;
/// Cells that repeats make out of others, in all sheets.
inline constexpr std::uint64_t RepeatedCells = 1ULL << 24;
/// Shared strings, and their bytes together.
inline constexpr std::size_t Strings = 4'000'000;
inline constexpr std::size_t StringBytes = std::size_t{128} << 20;
/// Formats of cells, and number formats.
inline constexpr std::size_t Formats = 65'536;
/// Bytes of one cell's text.
inline constexpr std::size_t CellBytes = std::size_t{1} << 20;
}  // namespace limits

enum class Visibility {
  Visible,
  Hidden,
  VeryHidden,  ///< not even offered for showing
};
/// "visible", "hidden", "very-hidden".
[[nodiscard]] const char* WordOf(Visibility visibility);

/// One sheet of a spreadsheet.
struct SheetInfo {
  std::string name;
  Visibility visibility = Visibility::Visible;
  std::string id;        ///< of its relationship; of OOXML alone
  std::string target;    ///< as the relationship has it
  std::string part;      ///< where that leads in the package; empty if nowhere
  bool hasCells = true;  ///< false for a chart that has a sheet to itself
};

/// Takes the rows of sheets as they are read. A failure ends the reading, which then fails with it.
class RowSink {
 public:
  virtual ~RowSink() = default;
  /// A sheet begins; `number` counts from 1.
  virtual Expected<void> BeginSheet(const SheetInfo& sheet, std::size_t number) = 0;
  /// A row with at least one cell that is not empty; the last one is not. `row` counts from 1, and
  /// grows. The cells may be changed.
  virtual Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) = 0;
};

/// Name of a column: 1 is A, 27 is AA.
[[nodiscard]] std::string ColumnName(std::uint64_t column);

}  // namespace rastrel::spreadsheet
