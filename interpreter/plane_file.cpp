#include "interpreter/plane_file.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "rastrel/platform/os/hex.h"

namespace rastrel::interpreter {
namespace {

constexpr std::uint32_t TagStripOffsets = 273;
constexpr std::uint32_t TagStripByteCounts = 279;
constexpr std::uint32_t TagCompression = 259;
constexpr std::uint32_t TagWidth = 256;
constexpr std::uint32_t TagHeight = 257;
constexpr std::uint32_t TagRowsPerStrip = 278;

// Little-endian numbers of a file; 0 where there are none.
class TiffBytes {
 public:
  explicit TiffBytes(std::string_view bytes) : m_Bytes(bytes) {}

  [[nodiscard]] std::uint32_t Number(std::uint64_t at, std::size_t size) const {
    if (at > m_Bytes.size() || m_Bytes.size() - at < size) return 0;
    std::uint32_t number = 0;
    for (std::size_t index = size; index-- > 0;)
      number = number << 8 | static_cast<unsigned char>(m_Bytes[at + index]);
    return number;
  }

  // Values of an entry of the first directory, 16 or 32 bits each.
  [[nodiscard]] std::vector<std::uint32_t> Values(std::uint32_t tag) const {
    const std::uint64_t directory = Number(4, 4);
    const std::uint32_t entries = Number(directory, 2);
    for (std::uint32_t entry = 0; entry < entries; ++entry) {
      const std::uint64_t at = directory + 2 + entry * 12U;
      if (Number(at, 2) != tag) continue;
      const std::size_t size = Number(at + 2, 2) == 3 ? 2 : 4;
      const std::uint64_t count = std::min<std::uint64_t>(Number(at + 4, 4), m_Bytes.size());
      const std::uint64_t first = count * size <= 4 ? at + 8 : Number(at + 8, 4);
      std::vector<std::uint32_t> values;
      for (std::uint64_t index = 0; index < count; ++index)
        values.push_back(Number(first + index * size, size));
      return values;
    }
    return {};
  }

 private:
  std::string_view m_Bytes;
};

}  // namespace

std::optional<std::string> PlaneNameBytes(std::string_view fileName) {
  constexpr std::string_view end = ").tif";
  const std::size_t open = fileName.find('(');
  if (open == fileName.npos || !fileName.ends_with(end)) return std::nullopt;
  const std::string_view escaped =
      fileName.substr(open + 1, fileName.size() - end.size() - open - 1);
  std::string name;
  for (std::size_t index = 0; index < escaped.size(); ++index) {
    const bool isEscape = escaped[index] == '%' && index + 2 < escaped.size();
    const auto byte = isEscape ? os::ByteFromHex(escaped[index + 1], escaped[index + 2])
                               : std::optional<unsigned char>();
    name.push_back(byte ? static_cast<char>(*byte) : escaped[index]);
    if (byte) index += 2;
  }
  return name;
}

std::optional<bool> PlaneHasInk(std::string_view bytes, const PlanePart& part) {
  const TiffBytes tiff(bytes);
  const auto offsets = tiff.Values(TagStripOffsets);
  const auto counts = tiff.Values(TagStripByteCounts);
  const auto widths = tiff.Values(TagWidth);
  const auto heights = tiff.Values(TagHeight);
  const auto strips = tiff.Values(TagRowsPerStrip);
  const bool isPlain = tiff.Values(TagCompression) == std::vector<std::uint32_t>{1};
  if (!bytes.starts_with(std::string_view("II*\0", 4)) || !isPlain || offsets.empty() ||
      offsets.size() != counts.size() || widths.empty() || heights.empty())
    return std::nullopt;
  const std::size_t width = widths.front();
  const std::uint64_t height = heights.front();
  const std::uint64_t rowsPerStrip = strips.empty() ? height : strips.front();
  if (width == 0 || rowsPerStrip == 0) return std::nullopt;
  const std::uint64_t firstRow = height - std::min<std::uint64_t>(height, part.rows);
  bool hasInk = false;
  for (std::size_t strip = 0; strip < offsets.size(); ++strip) {
    if (offsets[strip] > bytes.size() || bytes.size() - offsets[strip] < counts[strip])
      return std::nullopt;
    const std::string_view rows = bytes.substr(offsets[strip], counts[strip]);
    for (std::size_t at = 0; at < rows.size() && !hasInk; at += width) {
      const std::uint64_t row = strip * rowsPerStrip + at / width;
      if (row < firstRow) continue;
      const std::string_view samples = rows.substr(at, std::min<std::size_t>(width, part.columns));
      hasInk = samples.find_first_not_of('\xFF') != samples.npos;
    }
  }
  return hasInk;
}

}  // namespace rastrel::interpreter
