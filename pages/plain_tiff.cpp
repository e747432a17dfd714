#include "pages/plain_tiff.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

namespace rastrel::pages {
namespace {

constexpr std::uint64_t StripBytes = 64u << 10;
constexpr std::size_t PixelAlignment = 16;
constexpr std::string_view Software{"Rastrel", 8};  // with the zero at its end

/// The directory's entries, in the order of their numbers, as TIFF wants them.
enum Tag : std::uint16_t {
  ImageWidth = 256,
  ImageLength = 257,
  BitsPerSample = 258,
  Compression = 259,
  Photometric = 262,
  StripOffsets = 273,
  Orientation = 274,
  SamplesPerPixel = 277,
  RowsPerStrip = 278,
  StripByteCounts = 279,
  XResolution = 282,
  YResolution = 283,
  PlanarConfiguration = 284,
  ResolutionUnit = 296,
  SoftwareName = 305,
};
constexpr std::size_t Entries = 15;
constexpr std::size_t DirectoryAt = 8;
constexpr std::size_t EntryBytes = 12;
constexpr std::size_t ValuesAt = DirectoryAt + 2 + Entries * EntryBytes + 4;

enum Type : std::uint16_t { Ascii = 2, Short = 3, Long = 4, Rational = 5 };

void Append(std::string& bytes, std::uint64_t value, unsigned count) {
  for (unsigned i = 0; i < count; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

std::uint32_t LongAt(std::span<const std::byte> bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) value |= std::to_integer<std::uint32_t>(bytes[at + i]) << 8 * i;
  return value;
}

/// A head as it grows: the directory, and after it the values that have no room in it.
class Head {
 public:
  void AddShort(Tag tag, std::uint32_t value) { AddEntry(tag, Short, 1, value); }
  void AddLong(Tag tag, std::uint32_t value) { AddEntry(tag, Long, 1, value); }
  void AddValues(Tag tag, Type type, std::uint32_t count, std::string_view values) {
    AddEntry(tag, type, count, static_cast<std::uint32_t>(ValuesAt + m_Values.size()));
    m_Values += values;
    if (m_Values.size() % 2 != 0) m_Values += '\0';  // values begin at even places
  }
  /// Of the strips, which fill up the file after everything else.
  void AddLater(Tag tag, std::uint32_t count) {
    m_Later[m_LaterCount++] = m_Entries.size() + 8;
    AddEntry(tag, Long, count, 0);
  }
  /// The file's bytes up to the pixels.
  std::string Finish(const PlainTiff& picture);

 private:
  void AddEntry(Tag tag, Type type, std::uint32_t count, std::uint32_t value) {
    Append(m_Entries, tag, 2);
    Append(m_Entries, type, 2);
    Append(m_Entries, count, 4);
    Append(m_Entries, value, 4);
  }
  void SetLater(std::size_t index, std::uint64_t value) {
    std::string bytes;
    Append(bytes, value, 4);
    m_Entries.replace(m_Later[index], 4, bytes);
  }

  std::string m_Entries;
  std::string m_Values;
  std::array<std::size_t, 2> m_Later{};  // places of the entries of offsets and lengths
  std::size_t m_LaterCount = 0;
};

std::string Head::Finish(const PlainTiff& picture) {
  const std::uint32_t rows = RowsPerStripOf(picture.RowBytes(), picture.height);
  const std::uint64_t strip = rows * picture.RowBytes();
  const std::uint64_t strips = (picture.PixelBytes() + strip - 1) / strip;
  const std::uint64_t offsetsAt = ValuesAt + m_Values.size();
  // A single number is in its entry.
  const std::uint64_t listed = strips > 1 ? 8 * strips : 0;
  const std::uint64_t pixelsAt =
      (offsetsAt + listed + PixelAlignment - 1) / PixelAlignment * PixelAlignment;
  SetLater(0, strips > 1 ? offsetsAt : pixelsAt);
  SetLater(1, strips > 1 ? offsetsAt + 4 * strips : picture.PixelBytes());
  std::string head = "II";
  Append(head, 42, 2);
  Append(head, DirectoryAt, 4);
  Append(head, Entries, 2);
  head += m_Entries;
  Append(head, 0, 4);  // no further picture
  head += m_Values;
  head.reserve(static_cast<std::size_t>(pixelsAt));
  if (strips > 1) {
    for (std::uint64_t i = 0; i < strips; ++i) Append(head, pixelsAt + i * strip, 4);
    for (std::uint64_t left = picture.PixelBytes(); left > 0; left -= std::min(left, strip))
      Append(head, std::min(left, strip), 4);
  }
  head.resize(static_cast<std::size_t>(pixelsAt));
  return head;
}

std::string BytesOf(const TiffResolution& resolution) {
  std::string bytes;
  Append(bytes, resolution.numerator, 4);
  Append(bytes, resolution.denominator, 4);
  return bytes;
}

}  // namespace

TiffResolution TiffResolutionOf(double pixelsPerInch) {
  for (std::uint32_t denominator = 1;; denominator *= 10) {
    const double scaled = pixelsPerInch * denominator;
    const double rounded = std::round(scaled);
    const bool isLast = scaled * 10 > 4e9 || denominator == 1'000'000;
    if (std::abs(scaled - rounded) < 1e-9 * scaled || isLast)
      return {std::max(static_cast<std::uint32_t>(rounded), 1U), denominator};
  }
}

std::uint32_t RowsPerStripOf(std::uint64_t rowBytes, std::uint32_t height) {
  const std::uint64_t rows = std::max<std::uint64_t>(1, StripBytes / rowBytes);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, height));
}

std::optional<std::string> PlainTiffHead(const PlainTiff& picture) {
  if (picture.width == 0 || picture.height == 0) return std::nullopt;
  if (picture.samples != 1 && picture.samples != 3) return std::nullopt;
  if (picture.RowBytes() > PlainTiffLimit / picture.height) return std::nullopt;
  const std::uint32_t rows = RowsPerStripOf(picture.RowBytes(), picture.height);
  const std::uint32_t strips = (picture.height - 1) / rows + 1;
  std::string bits;
  for (unsigned i = 0; i < picture.samples; ++i) Append(bits, 8, 2);
  Head head;
  head.AddLong(ImageWidth, picture.width);
  head.AddLong(ImageLength, picture.height);
  if (picture.samples == 1)
    head.AddShort(BitsPerSample, 8);
  else
    head.AddValues(BitsPerSample, Short, picture.samples, bits);
  head.AddShort(Compression, 1);
  head.AddShort(Photometric, picture.samples == 1 ? 1 : 2);  // black is 0; RGB
  head.AddLater(StripOffsets, strips);
  head.AddShort(Orientation, 1);
  head.AddShort(SamplesPerPixel, picture.samples);
  head.AddLong(RowsPerStrip, rows);
  head.AddLater(StripByteCounts, strips);
  head.AddValues(XResolution, Rational, 1, BytesOf(picture.x));
  head.AddValues(YResolution, Rational, 1, BytesOf(picture.y));
  head.AddShort(PlanarConfiguration, 1);
  head.AddShort(ResolutionUnit, 2);  // inch
  head.AddValues(SoftwareName, Ascii, static_cast<std::uint32_t>(Software.size()), Software);
  return head.Finish(picture);
}

std::optional<FoundPlainTiff> FindPlainTiff(std::span<const std::byte> begin) {
  if (begin.size() < FixedHeadBytes) return std::nullopt;
  const auto valueOf = [&](std::size_t entry) {
    return LongAt(begin, DirectoryAt + 2 + entry * EntryBytes + 8);
  };
  PlainTiff picture;
  picture.width = valueOf(0);
  picture.height = valueOf(1);
  picture.samples = valueOf(7);
  const auto resolutionAt = [&](std::size_t entry) -> std::optional<TiffResolution> {
    const std::size_t at = valueOf(entry);
    if (at > FixedHeadBytes - 8) return std::nullopt;
    return TiffResolution{LongAt(begin, at), LongAt(begin, at + 4)};
  };
  const auto x = resolutionAt(10);
  const auto y = resolutionAt(11);
  if (!x || !y) return std::nullopt;
  picture.x = *x;
  picture.y = *y;
  // A picture's head is made only if the fixed part is as it would be: a file that claims a vast
  // one costs nothing.
  const auto expected = PlainTiffHead(picture);
  if (!expected) return std::nullopt;
  const std::size_t compared = std::min(expected->size(), FixedHeadBytes);
  const auto same = std::equal(
      expected->begin(), expected->begin() + static_cast<std::ptrdiff_t>(compared), begin.begin(),
      [](char made, std::byte found) { return static_cast<std::byte>(made) == found; });
  if (!same) return std::nullopt;
  return FoundPlainTiff{picture, expected->size()};
}

std::optional<FoundPlainTiff> FindWholePlainTiff(const ReadFileAt& readAt,
                                                 std::uint64_t fileBytes) {
  std::vector<std::byte> begin(FixedHeadBytes);
  if (fileBytes < begin.size() || !readAt(0, begin)) return std::nullopt;
  const auto found = FindPlainTiff(begin);
  if (!found || found->pixelsAt + found->picture.PixelBytes() != fileBytes) return std::nullopt;
  const std::string head = PlainTiffHead(found->picture).value_or("");
  begin.resize(head.size());
  if (!readAt(0, begin)) return std::nullopt;
  return std::ranges::equal(begin, std::as_bytes(std::span(head))) ? found : std::nullopt;
}

}  // namespace rastrel::pages
