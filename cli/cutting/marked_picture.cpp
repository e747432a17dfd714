#include "cli/cutting/marked_picture.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "cutting/frame/mark_raster.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t Samples = 3;
constexpr std::uint64_t StripBytes = 64 * 1024;
constexpr char White = '\xFF';

// A little-endian TIFF of one directory:
//
//     0    II 42 0, offset of the directory: 8
//     8    number of entries, the entries of 12 bytes each, 0
//          bits of the samples: 8 8 8
//          x and y resolution, each a fraction
//          offsets of the strips, then their lengths
//          the strips
class TiffHead {
 public:
  TiffHead(std::uint64_t width, std::uint64_t height)
      : m_Width(width), m_Height(height), m_RowBytes(width * Samples) {
    m_RowsPerStrip = std::max<std::uint64_t>(StripBytes / m_RowBytes, 1);
    m_Strips = (height + m_RowsPerStrip - 1) / m_RowsPerStrip;
  }

  [[nodiscard]] std::uint64_t FileBytes() const { return DataOffset() + m_RowBytes * m_Height; }

  // REQUIRES: FileBytes fits in 32 bits.
  [[nodiscard]] std::string Text(double xResolution, double yResolution) {
    m_Text = std::string("II*\0", 4);
    Add32(8);
    Add16(Entries);
    AddEntry(256, Long, 1, m_Width);
    AddEntry(257, Long, 1, m_Height);
    AddEntry(258, Short, Samples, BitsOffset);
    AddEntry(259, Short, 1, 1);  // no compression
    AddEntry(262, Short, 1, 2);  // RGB
    AddArray(273, StripOffsetsOffset);
    AddEntry(277, Short, 1, Samples);
    AddEntry(278, Long, 1, m_RowsPerStrip);
    AddArray(279, StripOffsetsOffset + 4 * m_Strips);
    AddEntry(282, Rational, 1, ResolutionOffset);
    AddEntry(283, Rational, 1, ResolutionOffset + 8);
    AddEntry(296, Short, 1, 2);  // an inch
    Add32(0);
    for (std::uint64_t i = 0; i < Samples; ++i) Add16(8);
    AddFraction(xResolution);
    AddFraction(yResolution);
    for (std::uint64_t i = 0; i < m_Strips; ++i)
      Add32(DataOffset() + i * m_RowsPerStrip * m_RowBytes);
    for (std::uint64_t i = 0; i < m_Strips; ++i) Add32(BytesOfStrip(i));
    return m_Text;
  }

 private:
  static constexpr std::uint64_t Entries = 12;
  static constexpr std::uint64_t Short = 3;
  static constexpr std::uint64_t Long = 4;
  static constexpr std::uint64_t Rational = 5;
  static constexpr std::uint64_t BitsOffset = 8 + 2 + 12 * Entries + 4;
  static constexpr std::uint64_t ResolutionOffset = BitsOffset + 2 * Samples;
  static constexpr std::uint64_t StripOffsetsOffset = ResolutionOffset + 16;

  [[nodiscard]] std::uint64_t DataOffset() const { return StripOffsetsOffset + 8 * m_Strips; }
  [[nodiscard]] std::uint64_t BytesOfStrip(std::uint64_t strip) const {
    return std::min(m_RowsPerStrip, m_Height - strip * m_RowsPerStrip) * m_RowBytes;
  }

  void Add16(std::uint64_t number) {
    m_Text += static_cast<char>(number & 0xFF);
    m_Text += static_cast<char>(number >> 8 & 0xFF);
  }
  void Add32(std::uint64_t number) {
    Add16(number);
    Add16(number >> 16);
  }
  void AddEntry(std::uint64_t tag, std::uint64_t type, std::uint64_t count, std::uint64_t value) {
    Add16(tag);
    Add16(type);
    Add32(count);
    Add32(value);
  }
  // One number for each strip: a single one is in the entry itself.
  void AddArray(std::uint64_t tag, std::uint64_t offset) {
    const std::uint64_t single = tag == 273 ? DataOffset() : BytesOfStrip(0);
    AddEntry(tag, Long, m_Strips, m_Strips == 1 ? single : offset);
  }
  void AddFraction(double number) {
    constexpr std::uint64_t Parts = 1000;
    Add32(static_cast<std::uint64_t>(std::llround(number * Parts)));
    Add32(Parts);
  }

  std::uint64_t m_Width;
  std::uint64_t m_Height;
  std::uint64_t m_RowBytes;
  std::uint64_t m_RowsPerStrip = 1;
  std::uint64_t m_Strips = 0;
  std::string m_Text;
};

void Ink(std::string& row, const std::vector<std::uint8_t>& coverage) {
  for (std::size_t x = 0; x < coverage.size(); ++x) {
    if (coverage[x] == 0) continue;
    for (std::size_t i = x * Samples; i < (x + 1) * Samples; ++i) {
      const unsigned light = static_cast<unsigned char>(row[i]) * (255U - coverage[x]);
      row[i] = static_cast<char>((light + 127) / 255);
    }
  }
}

}  // namespace

Expected<void> WriteMarkedPicture(PagePicture& picture, const PictureMargins& margins,
                                  const std::vector<cutting::RegistrationMark>& marks,
                                  os::OutputFile& file) {
  if (picture.inks.process != cutting::ProcessColors::Rgb)
    return FailureOf("a .tif file takes the page in RGB: print to a .pdf file, or in a mode of RGB",
                     FailureCode::BadInput);
  const std::uint64_t width = std::uint64_t{margins.left} + picture.width + margins.right;
  const std::uint64_t height = std::uint64_t{margins.top} + picture.height + margins.bottom;
  if (width == 0 || height == 0) return FailureOf("the picture of the page has no pixels");
  TiffHead head(width, height);
  if (head.FileBytes() > std::numeric_limits<std::uint32_t>::max())
    return FailureOf("a TIFF of " + std::to_string(width) + " by " + std::to_string(height) +
                         " pixels is longer than 4 GiB",
                     FailureCode::BadInput);
  if (auto written = file.Write(head.Text(picture.xResolution, picture.yResolution)); !written)
    return written;
  cutting::MarkRaster raster(marks,
                             {static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                              picture.xResolution, picture.yResolution});
  std::vector<std::uint8_t> coverage(width);
  std::string row;
  for (std::uint64_t y = 0; y < height; ++y) {
    row.assign(width * Samples, White);
    if (y >= margins.top && y < std::uint64_t{margins.top} + picture.height) {
      const std::span<char> inside =
          std::span(row).subspan(margins.left * Samples, picture.width * Samples);
      if (auto read = picture.Read(y - margins.top, 0, inside); !read) return read;
    }
    if (raster.CoverageOf(y, coverage)) Ink(row, coverage);
    if (auto written = file.Write(row); !written) return written;
  }
  return {};
}

}  // namespace rastrel::cli
