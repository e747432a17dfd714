#include "host/document/bitmap_png.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace rastrel::document {

namespace {

using Bytes = std::vector<unsigned char>;

void AppendBigEndian(std::string& text, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
}

// A chunk (ISO 15948, 5.3). Numbers have the most significant byte first:
//
//     +-----------+---------+--------------+-----------+
//     | length    | type    | body         | check sum |
//     | 4 bytes   | 4 bytes | length bytes | 4 bytes   |
//     +-----------+---------+--------------+-----------+
//                 |<-- the sum is of these -->|
void AppendChunk(std::string& png, std::string_view type, std::string_view body) {
  AppendBigEndian(png, static_cast<std::uint32_t>(body.size()));
  const std::size_t begin = png.size();
  png += type;
  png += body;
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const auto* summed = reinterpret_cast<const Bytef*>(png.data() + begin);
  AppendBigEndian(
      png, static_cast<std::uint32_t>(crc32_z(crc32_z(0, nullptr, 0), summed, png.size() - begin)));
}

std::string HeadOf(const BitmapPixels& pixels) {
  constexpr char trueColor = 2;
  std::string body;
  AppendBigEndian(body, static_cast<std::uint32_t>(pixels.width));
  AppendBigEndian(body, static_cast<std::uint32_t>(pixels.height));
  body += '\x8';  // bits of a sample
  body += pixels.gray ? '\0' : trueColor;
  body.append(3, '\0');  // the one compression, the one set of filters, no interlacing
  return body;
}

// Pixels to the metre across and down, and the unit 1.
std::string ResolutionOf(const PngForm& form) {
  constexpr double inchesPerMetre = 1 / 0.0254;
  std::string body;
  for (const double dpi : {form.dpiX, form.dpiY}) {
    const double rounded = std::round(dpi * inchesPerMetre);
    AppendBigEndian(body, static_cast<std::uint32_t>(std::clamp(rounded, 1.0, 2147483647.0)));
  }
  return body + '\1';
}

// Filters rows (ISO 15948, 9): each by the one of three filters whose bytes are the smallest, taken
// as signed. Sheets of even color are mostly zeros by one of them.
class RowFilter {
 public:
  explicit RowFilter(const BitmapPixels& pixels)
      : m_Pixels(pixels),
        m_Length(static_cast<std::size_t>(pixels.width) * pixels.BytesPerPixel()),
        m_Above(m_Length),
        m_Row(m_Length) {
    for (Bytes& filtered : m_Filtered) filtered.resize(m_Length + 1);
    m_Filtered[1][0] = 1;
    m_Filtered[2][0] = 2;
  }

  // The row with the filter's number ahead; valid until the next call. Rows come in order.
  Bytes& Filtered(int row) {
    std::swap(m_Above, m_Row);
    TakeRow(m_Pixels.Row(row));
    const std::size_t step = m_Pixels.BytesPerPixel();
    for (std::size_t i = 0; i < m_Length; ++i) m_Filtered[0][i + 1] = m_Row[i];
    for (std::size_t i = 0; i < std::min(step, m_Length); ++i) m_Filtered[1][i + 1] = m_Row[i];
    for (std::size_t i = step; i < m_Length; ++i) {
      m_Filtered[1][i + 1] = static_cast<unsigned char>(m_Row[i] - m_Row[i - step]);
    }
    for (std::size_t i = 0; i < m_Length; ++i) {
      m_Filtered[2][i + 1] = static_cast<unsigned char>(m_Row[i] - m_Above[i]);
    }
    return *std::ranges::min_element(m_Filtered, {}, SizeOf);
  }

 private:
  // Colors are blue first in a bitmap, and red first in the file.
  void TakeRow(std::span<const std::byte> row) {
    if (m_Pixels.gray) {
      std::ranges::transform(row, m_Row.begin(),
                             [](std::byte one) { return static_cast<unsigned char>(one); });
      return;
    }
    for (std::size_t i = 0; i < m_Length; i += 3) {
      m_Row[i] = static_cast<unsigned char>(row[i + 2]);
      m_Row[i + 1] = static_cast<unsigned char>(row[i + 1]);
      m_Row[i + 2] = static_cast<unsigned char>(row[i]);
    }
  }

  static std::uint64_t SizeOf(const Bytes& filtered) {
    std::uint64_t size = 0;
    for (std::size_t i = 1; i < filtered.size(); ++i) {
      const int byte = filtered[i];
      size += static_cast<unsigned>(byte < 128 ? byte : 256 - byte);
    }
    return size;
  }

  const BitmapPixels& m_Pixels;
  std::size_t m_Length;
  Bytes m_Above;  // zeros above the first row
  Bytes m_Row;
  std::array<Bytes, 3> m_Filtered;  // none, the pixel on the left taken off, the one above
};

// A stream of compressed bytes that are put into chunks as they come.
class ImageData {
 public:
  ImageData(std::string& png, int level)
      : m_Png(png), m_Ready(deflateInit(&m_Stream, level) == Z_OK), m_Chunk(ChunkSize, '\0') {
    BeginChunk();
  }
  ~ImageData() {
    if (m_Ready) deflateEnd(&m_Stream);
  }
  ImageData(const ImageData&) = delete;
  ImageData& operator=(const ImageData&) = delete;

  [[nodiscard]] bool IsReady() const { return m_Ready; }
  void Add(Bytes& row) {
    for (std::size_t begin = 0; begin < row.size(); begin += MaximumPiece) {
      m_Stream.next_in = row.data() + begin;
      m_Stream.avail_in = static_cast<uInt>(std::min(row.size() - begin, MaximumPiece));
      while (m_Stream.avail_in > 0) Run(Z_NO_FLUSH);
    }
  }
  void Finish() {
    while (Run(Z_FINISH) == Z_OK) continue;
    EndChunk();
  }

 private:
  static constexpr std::size_t ChunkSize = std::size_t{1} << 18;
  // The compression counts bytes in 32 bits.
  static constexpr std::size_t MaximumPiece = std::size_t{1} << 30;

  int Run(int flush) {
    if (m_Stream.avail_out == 0) {
      EndChunk();
      BeginChunk();
    }
    return deflate(&m_Stream, flush);
  }
  void BeginChunk() {
    // NOLINTNEXTLINE: the library's bytes are unsigned
    m_Stream.next_out = reinterpret_cast<Bytef*>(m_Chunk.data());
    m_Stream.avail_out = static_cast<uInt>(ChunkSize);
  }
  void EndChunk() {
    const std::size_t used = ChunkSize - m_Stream.avail_out;
    if (used > 0) AppendChunk(m_Png, "IDAT", std::string_view(m_Chunk).substr(0, used));
  }

  std::string& m_Png;
  z_stream m_Stream{};
  bool m_Ready;
  std::string m_Chunk;
};

}  // namespace

std::string PngOfBitmap(const BitmapPixels& pixels, const PngForm& form) {
  std::string png = "\x89PNG\r\n\x1A\n";
  AppendChunk(png, "IHDR", HeadOf(pixels));
  if (form.dpiX > 0 && form.dpiY > 0) AppendChunk(png, "pHYs", ResolutionOf(form));
  ImageData data(png, std::clamp(form.level, 1, 9));
  if (!data.IsReady()) return {};
  RowFilter filter(pixels);
  for (int row = 0; row < pixels.height; ++row) data.Add(filter.Filtered(row));
  data.Finish();
  AppendChunk(png, "IEND", {});
  return png;
}

}  // namespace rastrel::document
