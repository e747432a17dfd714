#include "cfplane/tiff_directory.h"

#include <algorithm>
#include <array>
#include <optional>

namespace rastrel::planes {
namespace {

constexpr std::size_t HeadBytes = 8;
constexpr std::size_t EntryBytes = 12;

// Tags of the format, by number.
constexpr std::uint32_t ImageWidth = 256;
constexpr std::uint32_t ImageLength = 257;
constexpr std::uint32_t BitsPerSample = 258;
constexpr std::uint32_t Compression = 259;
constexpr std::uint32_t Photometric = 262;
constexpr std::uint32_t StripOffsets = 273;
constexpr std::uint32_t SamplesPerPixel = 277;
constexpr std::uint32_t RowsPerStrip = 278;
constexpr std::uint32_t StripByteCounts = 279;
constexpr std::uint32_t TileWidth = 322;

// Their values' types.
constexpr std::uint32_t Short = 3;
constexpr std::uint32_t Long = 4;

std::uint32_t LittleEndian(std::span<const std::byte> bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    number = number << 8 | std::to_integer<std::uint32_t>(bytes[i]);
  return number;
}

class DirectoryReader {
 public:
  DirectoryReader(std::uint64_t fileBytes, const ReadBytesAt& readAt)
      : m_FileBytes(fileBytes), m_ReadAt(readAt) {}

  Expected<TiffDirectory> Read() {
    if (auto read = ReadEntries(); !read) return read.Error();
    TiffDirectory directory;
    if (Has(TileWidth)) return FailureOf("lies in tiles");
    if (!Is(BitsPerSample, 8, 1)) return FailureOf("has not 8 bits a sample");
    if (!Is(SamplesPerPixel, 1, 1)) return FailureOf("has more than one sample a pixel");
    if (!Is(Compression, 1, 1)) return FailureOf("is compressed");
    if (!Is(Photometric, 1, {})) return FailureOf("is not gray with 0 for black");
    directory.width = Number(ImageWidth).value_or(0);
    directory.height = Number(ImageLength).value_or(0);
    directory.rowsPerStrip = Number(RowsPerStrip).value_or(directory.height);
    auto offsets = Values(StripOffsets);
    if (!offsets) return offsets.Error();
    auto counts = Values(StripByteCounts);
    if (!counts) return counts.Error();
    directory.offsets = std::move(*offsets);
    directory.counts = std::move(*counts);
    return directory;
  }

 private:
  Expected<void> ReadEntries() {
    std::array<std::byte, HeadBytes> head{};
    if (auto read = m_ReadAt(0, head); !read) return read;
    constexpr std::array<std::byte, 4> magic{std::byte{'I'}, std::byte{'I'}, std::byte{'*'},
                                             std::byte{0}};
    if (!std::ranges::equal(std::span(head).first(4), magic))
      return FailureOf("is no little-endian TIFF file");
    const std::uint64_t place = LittleEndian(std::span(head).last(4));
    std::array<std::byte, 2> number{};
    if (auto read = m_ReadAt(place, number); !read) return read;
    m_Entries.resize(LittleEndian(number) * EntryBytes);
    return m_ReadAt(place + number.size(), m_Entries);
  }

  // The first entry of a tag; empty if there is none.
  [[nodiscard]] std::span<const std::byte> Entry(std::uint32_t tag) const {
    for (std::size_t at = 0; at < m_Entries.size(); at += EntryBytes) {
      const auto entry = std::span(m_Entries).subspan(at, EntryBytes);
      if (LittleEndian(entry.first(2)) == tag) return entry;
    }
    return {};
  }
  [[nodiscard]] bool Has(std::uint32_t tag) const { return !Entry(tag).empty(); }

  // Bytes of one value; 0 for a type that no tag here has.
  static std::size_t ValueBytes(std::span<const std::byte> entry) {
    const std::uint32_t type = LittleEndian(entry.subspan(2, 2));
    return type == Short ? 2 : type == Long ? 4 : 0;
  }

  // The only value of a tag.
  [[nodiscard]] std::optional<std::uint32_t> Number(std::uint32_t tag) const {
    const auto entry = Entry(tag);
    if (entry.empty() || ValueBytes(entry) == 0 || LittleEndian(entry.subspan(4, 4)) != 1)
      return std::nullopt;
    return LittleEndian(entry.subspan(8, ValueBytes(entry)));
  }

  // Whether it is `expected`. A file without the tag has `otherwise`.
  [[nodiscard]] bool Is(std::uint32_t tag, std::uint32_t expected,
                        std::optional<std::uint32_t> otherwise) const {
    return (Has(tag) ? Number(tag) : otherwise) == expected;
  }

  [[nodiscard]] Expected<std::vector<std::uint32_t>> Values(std::uint32_t tag) const {
    const auto entry = Entry(tag);
    const std::size_t size = entry.empty() ? 0 : ValueBytes(entry);
    if (size == 0) return FailureOf("has no strips");
    const std::uint64_t bytes = std::uint64_t{LittleEndian(entry.subspan(4, 4))} * size;
    if (bytes > m_FileBytes) return FailureOf("lists more strips than it has bytes");
    std::vector<std::byte> stored(bytes);
    if (bytes <= 4) {
      std::ranges::copy(entry.subspan(8, bytes), stored.begin());
    } else if (auto read = m_ReadAt(LittleEndian(entry.subspan(8, 4)), stored); !read) {
      return read.Error();
    }
    std::vector<std::uint32_t> values(stored.size() / size);
    for (std::size_t i = 0; i < values.size(); ++i)
      values[i] = LittleEndian(std::span(stored).subspan(i * size, size));
    return values;
  }

  std::uint64_t m_FileBytes;
  const ReadBytesAt& m_ReadAt;
  std::vector<std::byte> m_Entries;
};

}  // namespace

Expected<TiffDirectory> ReadTiffDirectory(std::uint64_t fileBytes, const ReadBytesAt& readAt) {
  return DirectoryReader(fileBytes, readAt).Read();
}

}  // namespace rastrel::planes
