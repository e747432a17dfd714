#include "host/document/bitmap.h"

namespace rastrel::document {

namespace {

constexpr std::uint32_t HeaderSize = 40;
constexpr std::uint16_t ColorBits = 24;
constexpr std::uint16_t GrayBits = 8;

bool IsOfOurForm(const BITMAPINFOHEADER& header) {
  return header.biSize == HeaderSize && header.biPlanes == 1 && header.biCompression == 0 &&
         header.biWidth > 0 && header.biHeight != 0 && header.biHeight != INT32_MIN &&
         (header.biBitCount == ColorBits || header.biBitCount == GrayBits);
}

}  // namespace

std::shared_ptr<const BitmapPixels> PixelsOf(const BITMAPINFOHEADER& header,
                                             std::span<const std::byte> pixels) {
  if (!IsOfOurForm(header)) return nullptr;
  auto made = std::make_shared<BitmapPixels>();
  made->width = header.biWidth;
  made->height = header.biHeight < 0 ? -header.biHeight : header.biHeight;
  made->gray = header.biBitCount == GrayBits;
  // At most 2^31 rows of 3 * 2^31 bytes, which 64 bits hold.
  const std::size_t row = made->RowBytes();
  const std::size_t size = row * static_cast<std::size_t>(made->height);
  if (pixels.size() != size || (header.biSizeImage != 0 && header.biSizeImage != size)) {
    return nullptr;
  }
  if (header.biHeight < 0) {
    made->bytes.assign(pixels.begin(), pixels.end());
    return made;
  }
  made->bytes.reserve(size);
  for (std::size_t end = size; end > 0; end -= row) {
    const auto begin = pixels.begin() + static_cast<std::ptrdiff_t>(end - row);
    made->bytes.insert(made->bytes.end(), begin, begin + static_cast<std::ptrdiff_t>(row));
  }
  return made;
}

int Bitmap::Create(const BITMAPINFOHEADER& header, std::span<const std::byte> pixels) {
  auto made = PixelsOf(header, pixels);
  if (!made) return 0;
  m_Pixels = std::move(made);
  return 1;
}

}  // namespace rastrel::document
