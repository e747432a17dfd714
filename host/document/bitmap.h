#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "rastrel/platform/host/placed_graphics.h"
#include "rastrel/platform/values/bitmap_header.h"

namespace rastrel::document {

/// The pixels of a bitmap, which never change once they are made. Rows go from the top down, each
/// padded to whole 4 bytes.
struct BitmapPixels {
  int width = 0;      ///< pixels, above 0
  int height = 0;     ///< rows, above 0
  bool gray = false;  ///< one byte a pixel, 0 black; else three: blue, green and red
  std::vector<std::byte> bytes;

  [[nodiscard]] std::size_t BytesPerPixel() const { return gray ? 1 : 3; }
  [[nodiscard]] std::size_t RowBytes() const {
    return (static_cast<std::size_t>(width) * BytesPerPixel() + 3) / 4 * 4;
  }
  /// A row without its padding, from 0 at the top.
  [[nodiscard]] std::span<const std::byte> Row(int row) const {
    return std::span(bytes).subspan(static_cast<std::size_t>(row) * RowBytes(),
                                    static_cast<std::size_t>(width) * BytesPerPixel());
  }
  bool operator==(const BitmapPixels&) const = default;
};

/// A copy of the pixels of a device independent bitmap: 24 bits a pixel, or 8, which are levels of
/// gray. Null for a header of another form, or one that does not agree with the number of bytes:
///
///     biSize 40, biPlanes 1, biCompression 0, biWidth above 0, biBitCount 24 or 8
///     biHeight below 0: the first row is the top one; above 0: the bottom one
///     pixels: biHeight rows of biWidth pixels, each padded to whole 4 bytes
///     biSizeImage: 0, or the number of these bytes
[[nodiscard]] std::shared_ptr<const BitmapPixels> PixelsOf(const BITMAPINFOHEADER& header,
                                                           std::span<const std::byte> pixels);

/// The bitmap of the embedded host. The object that is made of it shares its pixels.
class Bitmap : public CVKBitmap {
 public:
  Bitmap() = default;
  ~Bitmap() override = default;

  /// As PixelsOf; without success the bitmap keeps the pixels that it has.
  int Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) override;
  /// Null until `Create` has succeeded.
  [[nodiscard]] const std::shared_ptr<const BitmapPixels>& Pixels() const { return m_Pixels; }

 private:
  std::shared_ptr<const BitmapPixels> m_Pixels;
};

}  // namespace rastrel::document
