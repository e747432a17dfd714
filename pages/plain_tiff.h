#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

/// The one form of TIFF in which a page of gray or RGB pixels is kept and in which a device without
/// compression gets it, so that the file can be handed on as it is. TIFF 6.0 in Intel's byte order:
///
///     0   "II", 42, offset of the directory: 8
///     8   the directory, then the values that it has no room for: bits of the samples, both
///         resolutions, "Rastrel", offsets and lengths of the strips
///     n   the pixels without a gap, row by row from the top; n is a multiple of 16
///
/// A picture has one such file and no other: strips have 64 KiB, or one row where it is longer.
namespace rastrel::pages {

/// Pixels per inch as TIFF has it.
struct TiffResolution {
  std::uint32_t numerator = 72;
  std::uint32_t denominator = 1;

  bool operator==(const TiffResolution&) const = default;
};

/// A resolution above 0 and up to 100,000, to the hundred-thousandth part of a pixel at least where
/// it is below 10,000; whole numbers as they are.
[[nodiscard]] TiffResolution TiffResolutionOf(double pixelsPerInch);

struct PlainTiff {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  unsigned samples = 3;  ///< of each pixel, 8 bits: 1 is gray (0 is black), 3 is RGB
  TiffResolution x;
  TiffResolution y;

  [[nodiscard]] std::uint64_t RowBytes() const { return std::uint64_t{width} * samples; }
  [[nodiscard]] std::uint64_t PixelBytes() const { return RowBytes() * height; }

  bool operator==(const PlainTiff&) const = default;
};

/// Rows of a strip but the last; TIFF has strips so that a reader need not hold the picture.
[[nodiscard]] std::uint32_t RowsPerStripOf(std::uint64_t rowBytes, std::uint32_t height);

/// Pixels from which on a file has another form: offsets are of 32 bits, and compressions of the
/// same picture, which may be larger than it, begin to need more at the same size.
inline constexpr std::uint64_t PlainTiffLimit = 2'800'000'000;

/// All bytes of the file ahead of its pixels. Nothing for a picture without pixels, with other than
/// 1 or 3 samples, or of more than PlainTiffLimit bytes.
[[nodiscard]] std::optional<std::string> PlainTiffHead(const PlainTiff& picture);

/// The picture whose head begins with these bytes of a file, `FixedHeadBytes` or more; nothing if
/// they begin no such head. The strips that follow are not looked at.
struct FoundPlainTiff {
  PlainTiff picture;
  std::uint64_t pixelsAt = 0;  ///< from the file's begin
};
inline constexpr std::size_t FixedHeadBytes = 224;
[[nodiscard]] std::optional<FoundPlainTiff> FindPlainTiff(std::span<const std::byte> begin);

/// Fills the span with the file's bytes from the offset on; false if it can't.
using ReadFileAt = std::function<bool(std::uint64_t offset, std::span<std::byte> bytes)>;

/// The picture of a file of so many bytes; nothing if it is not, to the last byte of its head and
/// in its size, the file that PlainTiffHead and the pixels make.
[[nodiscard]] std::optional<FoundPlainTiff> FindWholePlainTiff(const ReadFileAt& readAt,
                                                               std::uint64_t fileBytes);

}  // namespace rastrel::pages
