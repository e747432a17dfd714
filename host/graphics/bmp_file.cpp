#include "host/graphics/bmp_file.h"

#include <cstdint>

#include "host/graphics/picture.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::graphics {

namespace {

constexpr std::size_t HeadSize = 14;
constexpr std::size_t PixelOffset = HeadSize + 40;
// Of the most pixels in rows of one pixel, which are padded to 4 bytes.
constexpr std::uint64_t LargestBmpFile = PixelOffset + MaximumGraphicPixels * 4;

// Takes numbers off the front of a text that is long enough.
class NumberTaker {
 public:
  explicit NumberTaker(std::string_view bytes) : m_Bytes(bytes) {}

  std::uint32_t Take(std::size_t count) {
    std::uint32_t number = 0;
    for (std::size_t i = count; i > 0; --i) {
      number = number << 8 | static_cast<unsigned char>(m_Bytes[i - 1]);
    }
    m_Bytes.remove_prefix(count);
    return number;
  }

 private:
  std::string_view m_Bytes;
};

BITMAPINFOHEADER HeaderFrom(std::string_view bytes) {
  NumberTaker numbers(bytes);
  BITMAPINFOHEADER header;
  header.biSize = numbers.Take(4);
  header.biWidth = static_cast<std::int32_t>(numbers.Take(4));
  header.biHeight = static_cast<std::int32_t>(numbers.Take(4));
  header.biPlanes = static_cast<std::uint16_t>(numbers.Take(2));
  header.biBitCount = static_cast<std::uint16_t>(numbers.Take(2));
  header.biCompression = numbers.Take(4);
  header.biSizeImage = numbers.Take(4);
  return header;
}

}  // namespace

Expected<std::shared_ptr<const document::BitmapPixels>> PixelsOfBmp(std::string_view file) {
  if (file.size() < PixelOffset || !file.starts_with("BM"))
    return FailureOf("it is no Windows bitmap");
  NumberTaker head(file.substr(2));
  const std::uint32_t size = head.Take(4);
  head.Take(4);
  const std::uint32_t offset = head.Take(4);
  const BITMAPINFOHEADER header = HeaderFrom(file.substr(HeadSize));
  if (offset != PixelOffset || header.biBitCount != 24) {
    return FailureOf("it is no Windows bitmap of 24 bits a pixel without colours of its own");
  }
  const std::int64_t height = header.biHeight;
  const std::uint64_t rows = static_cast<std::uint64_t>(height < 0 ? -height : height);
  if (header.biWidth > 0 &&
      static_cast<std::uint64_t>(header.biWidth) * rows > MaximumGraphicPixels) {
    return FailureOf("it has " + std::to_string(header.biWidth) + " by " + std::to_string(rows) +
                     " pixels; " + std::to_string(MaximumGraphicPixels) + " are the most");
  }
  if (size != file.size()) return FailureOf("it is not as long as its head says");
  auto pixels = document::PixelsOf(header, std::as_bytes(std::span(file.substr(PixelOffset))));
  if (!pixels) return FailureOf("its head does not agree with its pixels");
  return pixels;
}

Expected<std::shared_ptr<const document::BitmapPixels>> ReadBmpFile(const std::wstring& path) {
  const auto file = os::ReadWholeFile(path, LargestBmpFile);
  if (!file) return file.Error();
  return PixelsOfBmp(*file);
}

}  // namespace rastrel::graphics
