#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

/// One file of pixels in a page directory, read a row at a time. Memory is in proportion to a row
/// or strip, whatever the file claims to hold.
namespace rastrel::odalis {

/// Pixels to a side of a page at most.
inline constexpr unsigned MaximumSide = 2'000'000;
/// Bytes of one row, or one strip of a TIFF file, at most.
inline constexpr std::uint64_t LargestRow = 64u << 20;

class PixelFile {
 public:
  virtual ~PixelFile() = default;

  [[nodiscard]] unsigned Width() const { return m_Width; }
  [[nodiscard]] unsigned Height() const { return m_Height; }
  [[nodiscard]] unsigned Samples() const { return m_Samples; }
  /// Bytes of a row: 8 bits a sample, the samples of a pixel side by side.
  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{m_Width} * m_Samples; }

  /// The next row, from the top. REQUIRES: the span has RowBytes(), and rows are left.
  [[nodiscard]] virtual Expected<void> ReadRow(std::span<std::uint8_t> row) = 0;

 protected:
  unsigned m_Width = 0;
  unsigned m_Height = 0;
  unsigned m_Samples = 0;
};

/// Opens a file of a page directory (native path): binary gray or RGB netpbm (P5, P6 with 255 as
/// the highest value), or TIFF in strips with 8 bits a sample and no color conversion. The file
/// must be a regular one of that size and checksum; links are not followed. The failure names
/// the file.
[[nodiscard]] Expected<std::unique_ptr<PixelFile>> OpenPixelFile(const std::string& directory,
                                                                 const pages::PageFile& file);

}  // namespace rastrel::odalis
