#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "interpreter/page_stream.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// Makes a small picture of a page while its rows pass by. Keeps the page's aspect; the longer side
/// has 256 pixels, or the page's own number if that is less. A pixel is the mean of up to 16
/// samples of its cell.
class Preview {
 public:
  static constexpr unsigned MaximumSide = 256;

  explicit Preview(const PageSize& page);

  /// Whether the row with that number counts. The others need not be handed over.
  [[nodiscard]] bool Wants(unsigned row) const;
  /// Takes a row that counts; rows come from the top.
  void AddRow(unsigned row, std::span<const std::byte> samples);
  /// Writes the picture as a PNG file that must not exist yet. `path` is native.
  [[nodiscard]] Expected<void> Write(const std::string& path) const;

  [[nodiscard]] unsigned Width() const { return m_Width; }
  [[nodiscard]] unsigned Height() const { return m_Height; }

 private:
  PageSize m_Page;
  unsigned m_Width;
  unsigned m_Height;
  std::vector<unsigned> m_Columns;      // the source columns that count, in order
  std::vector<unsigned> m_ColumnCells;  // the cell that each belongs to
  std::vector<std::uint32_t> m_Sums;    // channels of each cell
  // A cell has a sample where one of its rows that have come crosses one of its columns.
  std::vector<std::uint32_t> m_RowCounts;     // of each row of cells
  std::vector<std::uint32_t> m_ColumnCounts;  // of each column of cells
};

}  // namespace rastrel::interpreter
