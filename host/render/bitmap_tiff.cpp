#include "host/render/bitmap_tiff.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace rastrel::render {
namespace {

using document::BitmapPixels;

constexpr std::size_t StripBytes = std::size_t{1} << 18;
constexpr int CompressionLevel = 3;
constexpr double RationalUnit = 10'000;

void Append16(std::string& text, unsigned value) {
  text += static_cast<char>(value & 0xFF);
  text += static_cast<char>(value >> 8 & 0xFF);
}
void Append32(std::string& text, std::uint64_t value) {
  Append16(text, static_cast<unsigned>(value & 0xFFFF));
  Append16(text, static_cast<unsigned>(value >> 16 & 0xFFFF));
}

// A row as differences from the pixel on the left (predictor 2), red first.
void AppendRow(std::string& strip, const BitmapPixels& pixels, int row) {
  const auto bytes = pixels.Row(row);
  const std::size_t step = pixels.BytesPerPixel();
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    for (std::size_t sample = 0; sample < step; ++sample) {
      const std::size_t from = at + step - 1 - sample;
      const int left = at == 0 ? 0 : static_cast<int>(bytes[from - step]);
      strip += static_cast<char>(static_cast<int>(bytes[from]) - left);
    }
  }
}

bool Compress(const std::string& strip, std::string& file) {
  uLongf size = compressBound(static_cast<uLong>(strip.size()));
  const std::size_t begin = file.size();
  file.resize(begin + size);
  // NOLINTBEGIN: the library's bytes are unsigned
  const int state = compress2(reinterpret_cast<Bytef*>(file.data() + begin), &size,
                              reinterpret_cast<const Bytef*>(strip.data()),
                              static_cast<uLong>(strip.size()), CompressionLevel);
  // NOLINTEND
  file.resize(begin + (state == Z_OK ? size : 0));
  return state == Z_OK;
}

// The fields of a page, in the order of their tags.
class Fields {
 public:
  void Short(unsigned tag, unsigned value) { Add(tag, 3, 1, value); }
  void Long(unsigned tag, std::uint64_t value) { Add(tag, 4, 1, value); }
  // Of several values that lie elsewhere.
  void At(unsigned tag, unsigned type, std::size_t count, std::uint64_t offset) {
    Add(tag, type, count, offset);
  }
  [[nodiscard]] std::string Take() const {
    std::string text;
    Append16(text, m_Count);
    text += m_Text;
    Append32(text, 0);
    return text;
  }

 private:
  void Add(unsigned tag, unsigned type, std::uint64_t count, std::uint64_t value) {
    Append16(m_Text, tag);
    Append16(m_Text, type);
    Append32(m_Text, count);
    Append32(m_Text, value);
    ++m_Count;
  }
  unsigned m_Count = 0;
  std::string m_Text;
};

struct Strips {
  int rows;  // of each but the last
  std::vector<std::uint64_t> offsets;
  std::vector<std::uint64_t> sizes;
};

std::uint64_t RationalOf(double dpi) {
  return static_cast<std::uint64_t>(std::clamp(std::round(dpi * RationalUnit), 1.0, 4294967295.0));
}

// The values that don't fit into a field, and then the fields:
//
//     | bits of the samples | x resolution | y resolution | strip offsets | strip sizes | fields |
//     | 3 x 2 bytes, 2 more | 2 x 4 bytes  | 2 x 4 bytes  | 4 bytes each  | 4 bytes each|        |
void AppendFields(std::string& file, const BitmapPixels& pixels, const Strips& strips, double dpiX,
                  double dpiY) {
  constexpr unsigned deflate = 8;
  constexpr unsigned blackIsZero = 1;
  constexpr unsigned rgb = 2;
  constexpr unsigned typeShort = 3;
  constexpr unsigned typeLong = 4;
  constexpr unsigned typeRational = 5;
  const std::uint64_t bits = file.size();
  for (int sample = 0; sample < 3; ++sample) Append16(file, 8);
  Append16(file, 0);
  const std::uint64_t resolutions = file.size();
  for (const double dpi : {dpiX, dpiY}) {
    Append32(file, RationalOf(dpi));
    Append32(file, static_cast<std::uint64_t>(RationalUnit));
  }
  const std::uint64_t offsets = file.size();
  for (const std::uint64_t offset : strips.offsets) Append32(file, offset);
  const std::uint64_t sizes = file.size();
  for (const std::uint64_t size : strips.sizes) Append32(file, size);
  const std::size_t count = strips.offsets.size();
  const std::uint64_t place = file.size();
  Fields fields;
  fields.Long(256, static_cast<std::uint64_t>(pixels.width));
  fields.Long(257, static_cast<std::uint64_t>(pixels.height));
  if (pixels.gray) {
    fields.Short(258, 8);
  } else {
    fields.At(258, typeShort, 3, bits);
  }
  fields.Short(259, deflate);
  fields.Short(262, pixels.gray ? blackIsZero : rgb);
  fields.At(273, typeLong, count, count == 1 ? strips.offsets.front() : offsets);
  fields.Short(277, pixels.gray ? 1 : 3);
  fields.Long(278, static_cast<std::uint64_t>(strips.rows));
  fields.At(279, typeLong, count, count == 1 ? strips.sizes.front() : sizes);
  fields.At(282, typeRational, 1, resolutions);
  fields.At(283, typeRational, 1, resolutions + 8);
  fields.Short(284, 1);  // samples side by side
  fields.Short(296, 2);  // inches
  fields.Short(317, 2);  // the predictor
  file += fields.Take();
  std::string head;
  Append32(head, place);
  std::ranges::copy(head, file.begin() + 4);
}

}  // namespace

Expected<std::string> TiffOfBitmap(const BitmapPixels& pixels, double dpiX, double dpiY) {
  constexpr std::uint64_t maximum = std::numeric_limits<std::uint32_t>::max();
  Strips strips;
  const std::size_t rowBytes = static_cast<std::size_t>(pixels.width) * pixels.BytesPerPixel();
  strips.rows = static_cast<int>(std::max<std::size_t>(1, StripBytes / rowBytes));
  // Little-endian, 42, and the place of the fields.
  std::string file("II*\0\0\0\0\0", 8);
  std::string strip;
  for (int row = 0; row < pixels.height; row += strips.rows) {
    strip.clear();
    for (int one = row; one < std::min(row + strips.rows, pixels.height); ++one)
      AppendRow(strip, pixels, one);
    strips.offsets.push_back(file.size());
    if (!Compress(strip, file)) return FailureOf("there is no memory for the TIFF");
    strips.sizes.push_back(file.size() - strips.offsets.back());
    if (file.size() % 2 != 0) file += '\0';  // fields begin at even places
    if (file.size() + strips.offsets.size() * 8 + 1024 > maximum)
      return FailureOf("the picture takes more than a TIFF can hold, 4 GiB");
  }
  AppendFields(file, pixels, strips, dpiX, dpiY);
  return file;
}

}  // namespace rastrel::render
