#include "rastrel/imports/xml_characters.h"

#include <cstddef>
#include <cstdint>

namespace rastrel::imports {

bool IsUtf8(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[at++]);
    if (lead < 0x80) continue;
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < more) return false;
    std::uint32_t value = lead & (0x3FU >> more);
    for (const std::size_t end = at + more; at < end; ++at) {
      const auto byte = static_cast<unsigned char>(bytes[at]);
      if ((byte & 0xC0) != 0x80) return false;
      value = value << 6 | (byte & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < smallest[more - 1] || value > 0x10FFFF || surrogate) return false;
  }
  return true;
}

bool AreXmlCharacters(std::string_view bytes) {
  using namespace std::string_view_literals;
  return IsUtf8(bytes) && bytes.find("\xEF\xBF\xBE"sv) == bytes.npos &&
         bytes.find("\xEF\xBF\xBF"sv) == bytes.npos;
}

}  // namespace rastrel::imports
