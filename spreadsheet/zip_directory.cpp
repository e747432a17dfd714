#include "spreadsheet/zip_directory.h"

#include <algorithm>

namespace rastrel::spreadsheet {
namespace {

constexpr std::string_view EndMark = "PK\x05\x06";
constexpr std::string_view LargeEndMark = "PK\x06\x06";
constexpr std::size_t EndSize = 22;
constexpr std::size_t LargeEndSize = 56;

std::uint64_t Number(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t index = size; index-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes[at + index]);
  return number;
}

}  // namespace

std::optional<ZipDirectoryClaim> FindZipDirectory(std::string_view tail) {
  std::optional<ZipDirectoryClaim> claim;
  const auto take = [&](std::string_view mark, std::size_t size, auto read) {
    for (std::size_t at = tail.find(mark); at != tail.npos; at = tail.find(mark, at + 1)) {
      if (tail.size() - at < size) break;
      const ZipDirectoryClaim one = read(at);
      if (!claim) claim.emplace();
      claim->entries = std::max(claim->entries, one.entries);
      claim->bytes = std::max(claim->bytes, one.bytes);
    }
  };
  take(EndMark, EndSize, [tail](std::size_t at) {
    ZipDirectoryClaim one{Number(tail, at + 10, 2), Number(tail, at + 12, 4)};
    // All ones mean that the other record holds the number.
    if (one.entries == 0xFFFF) one.entries = 0;
    if (one.bytes == 0xFFFFFFFF) one.bytes = 0;
    return one;
  });
  take(LargeEndMark, LargeEndSize, [tail](std::size_t at) {
    return ZipDirectoryClaim{Number(tail, at + 32, 8), Number(tail, at + 40, 8)};
  });
  return claim;
}

}  // namespace rastrel::spreadsheet
