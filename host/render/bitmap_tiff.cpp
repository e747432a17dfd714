#include "host/render/bitmap_tiff.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "host/render/tiff_fields.h"

namespace rastrel::render {
namespace {

using document::BitmapPixels;

constexpr std::size_t StripBytes = std::size_t{1} << 18;
constexpr int CompressionLevel = 3;
constexpr double LowestResolution = 1e-4;  // that a rational number can say

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

struct Strips {
  int rows;  // of each but the last
  std::vector<std::uint32_t> offsets;
  std::vector<std::uint32_t> sizes;
};

// The values that don't fit into a field, and then the fields:
//
//     | bits of the samples | x resolution | y resolution | strip offsets | strip sizes | fields |
//     | 3 x 2 bytes, 2 more | 2 x 4 bytes  | 2 x 4 bytes  | 4 bytes each  | 4 bytes each|        |
void AppendFields(std::string& file, const BitmapPixels& pixels, const Strips& strips, double dpiX,
                  double dpiY) {
  constexpr std::uint16_t deflate = 8;
  constexpr std::uint16_t blackIsZero = 1;
  constexpr std::uint16_t rgb = 2;
  const auto place = [&file] { return static_cast<std::uint32_t>(file.size()); };
  const std::uint32_t bits = place();
  for (int sample = 0; sample < 3; ++sample) AppendTiffNumber(file, 8, 2);
  AppendTiffNumber(file, 0, 2);
  const std::uint32_t resolutions = place();
  for (const double dpi : {dpiX, dpiY}) AppendTiffRational(file, std::max(dpi, LowestResolution));
  const std::uint32_t offsets = place();
  for (const std::uint32_t offset : strips.offsets) AppendTiffNumber(file, offset, 4);
  const std::uint32_t sizes = place();
  for (const std::uint32_t size : strips.sizes) AppendTiffNumber(file, size, 4);
  const auto count = static_cast<std::uint32_t>(strips.offsets.size());
  const std::uint32_t directory = place();
  TiffFields fields;
  fields.Long(256, static_cast<std::uint32_t>(pixels.width));
  fields.Long(257, static_cast<std::uint32_t>(pixels.height));
  if (pixels.gray) {
    fields.Short(258, 8);
  } else {
    fields.Add(258, TiffType::Short, 3, bits);
  }
  fields.Short(259, deflate);
  fields.Short(262, pixels.gray ? blackIsZero : rgb);
  fields.Add(273, TiffType::Long, count, count == 1 ? strips.offsets.front() : offsets);
  fields.Short(277, pixels.gray ? 1 : 3);
  fields.Long(278, static_cast<std::uint32_t>(strips.rows));
  fields.Add(279, TiffType::Long, count, count == 1 ? strips.sizes.front() : sizes);
  fields.Add(282, TiffType::Rational, 1, resolutions);
  fields.Add(283, TiffType::Rational, 1, resolutions + 8);
  fields.Short(284, 1);  // samples side by side
  fields.Short(296, 2);  // inches
  fields.Short(317, 2);  // the predictor
  file += fields.Bytes(0);
  std::string head;
  AppendTiffNumber(head, directory, 4);
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
    strips.offsets.push_back(static_cast<std::uint32_t>(file.size()));
    if (!Compress(strip, file)) return FailureOf("there is no memory for the TIFF");
    strips.sizes.push_back(static_cast<std::uint32_t>(file.size() - strips.offsets.back()));
    if (file.size() % 2 != 0) file += '\0';  // fields begin at even places
    if (file.size() + strips.offsets.size() * 8 + 1024 > maximum)
      return FailureOf("the picture takes more than a TIFF can hold, 4 GiB");
  }
  AppendFields(file, pixels, strips, dpiX, dpiY);
  return file;
}

}  // namespace rastrel::render
