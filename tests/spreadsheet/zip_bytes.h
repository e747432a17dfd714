#pragma once

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rastrel::test {

/// One entry of a zip file with every field that a hostile one may set.
struct ZipEntry {
  std::string name{};
  std::string content{};
  bool deflated = false;
  unsigned flags = 0;
  unsigned system = 3;  ///< that made it: 3 is Unix
  std::uint32_t mode = 0100644;
  std::optional<unsigned> method{};            ///< in place of the real one
  std::optional<std::uint32_t> claimedSize{};  ///< in place of the content's
  std::optional<std::uint32_t> claimedCrc{};
  std::optional<std::size_t> sharesDataOf{};  ///< index of an earlier entry
};

/// The bytes of a deflate stream without a header.
inline std::string Deflated(std::string_view content) {
  z_stream stream{};
  if (deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) != Z_OK) return {};
  std::string packed(deflateBound(&stream, content.size()), '\0');
  std::string input(content);
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

inline void AddNumber(std::string& bytes, std::uint64_t number, int size) {
  for (int index = 0; index < size; ++index, number >>= 8)
    bytes += static_cast<char>(number & 0xFF);
}

/// Puts zip files together by APPNOTE, whatever their fields say.
class ZipBytes {
 public:
  explicit ZipBytes(const std::vector<ZipEntry>& entries) {
    for (const ZipEntry& entry : entries) Add(entry);
  }

  /// The whole file. `entries` and `comment` may lie.
  [[nodiscard]] std::string Make(std::optional<unsigned> entries = {},
                                 std::string_view comment = {}) const {
    std::string bytes = m_Data + m_Directory;
    const unsigned count = entries.value_or(static_cast<unsigned>(m_Offsets.size()));
    bytes += "PK\x05\x06";
    AddNumber(bytes, 0, 4);
    AddNumber(bytes, count, 2);
    AddNumber(bytes, count, 2);
    AddNumber(bytes, m_Directory.size(), 4);
    AddNumber(bytes, m_Data.size(), 4);
    AddNumber(bytes, comment.size(), 2);
    return bytes + std::string(comment);
  }

 private:
  void Add(const ZipEntry& entry) {
    const std::string packed = entry.deflated ? Deflated(entry.content) : entry.content;
    const unsigned method = entry.method.value_or(entry.deflated ? 8 : 0);
    const auto crc = entry.claimedCrc.value_or(
        static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(entry.content.data()),
                                         static_cast<uInt>(entry.content.size()))));
    const std::uint64_t size =
        entry.claimedSize.value_or(static_cast<std::uint32_t>(entry.content.size()));
    std::string shared;
    AddNumber(shared, 20, 2);
    AddNumber(shared, entry.flags, 2);
    AddNumber(shared, method, 2);
    AddNumber(shared, 0x21, 4);  // time, and the first day that can be written
    AddNumber(shared, crc, 4);
    AddNumber(shared, packed.size(), 4);
    AddNumber(shared, size, 4);
    AddNumber(shared, entry.name.size(), 2);
    AddNumber(shared, 0, 2);

    m_Offsets.push_back(entry.sharesDataOf ? m_Offsets[*entry.sharesDataOf] : m_Data.size());
    if (!entry.sharesDataOf) m_Data += "PK\x03\x04" + shared + entry.name + packed;
    m_Directory += "PK\x01\x02";
    AddNumber(m_Directory, 20 | entry.system << 8, 2);
    m_Directory += shared;
    AddNumber(m_Directory, 0, 2 + 2 + 2);
    AddNumber(m_Directory, static_cast<std::uint64_t>(entry.mode) << 16, 4);
    AddNumber(m_Directory, m_Offsets.back(), 4);
    m_Directory += entry.name;
  }

  std::string m_Data;
  std::string m_Directory;
  std::vector<std::size_t> m_Offsets;
};

}  // namespace rastrel::test
