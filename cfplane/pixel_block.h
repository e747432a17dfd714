#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rastrel/platform/os/expected.h"

namespace rastrel::planes {

/// The form of a block of pixels as a bitmap wants it: rows one after the other, each padded to 4
/// bytes.
///
///      row 0   |pixel|pixel| ... |pixel|pad|
///      row 1   |pixel|pixel| ... |pixel|pad|      Stride() bytes each
struct BlockForm {
  std::uint32_t width = 0;   ///< pixels
  std::uint32_t height = 0;  ///< rows
  unsigned samples = 1;      ///< bytes of a pixel: 1 or 3
  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{width} * samples; }
  [[nodiscard]] std::size_t Stride() const { return (RowBytes() + 3) / 4 * 4; }
  /// Bytes of the whole block. REQUIRES: no side has more than MaximumSide pixels.
  [[nodiscard]] std::uint64_t Bytes() const { return std::uint64_t{Stride()} * height; }
};

/// Pixels of one side of a page at most.
inline constexpr std::uint32_t MaximumSide = 2'000'000;
/// Bytes of a block at most: its size has 32 bits in the header.
inline constexpr std::uint64_t MaximumBlock = 0xFFFFFFFF;

/// Memory for a block of pixels, zeroed, of large pages where the system has them: it is filled
/// once from a file, and most of that time would else be spent on its first touch. Move only.
class PixelBlock {
 public:
  PixelBlock() = default;
  /// Fails with ENOMEM if there is not as much memory. REQUIRES: `bytes` is not 0.
  [[nodiscard]] static Expected<PixelBlock> Allocate(std::size_t bytes);
  ~PixelBlock();
  PixelBlock(PixelBlock&& other) noexcept;
  PixelBlock& operator=(PixelBlock&& other) noexcept;
  PixelBlock(const PixelBlock&) = delete;
  PixelBlock& operator=(const PixelBlock&) = delete;

  [[nodiscard]] std::span<std::byte> Bytes() const { return m_Bytes; }

 private:
  std::span<std::byte> m_Bytes;
};

}  // namespace rastrel::planes
