#include "rastrel/xml/characters.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "rastrel/platform/os/hex.h"

namespace rastrel::xml {

using namespace std::string_view_literals;

namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& byte : lower)
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte + ('a' - 'A'));
  return lower;
}

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

}  // namespace

XmlEncodingFamily EncodingFamilyOf(std::string_view head) {
  if (head.starts_with("\xEF\xBB\xBF"sv)) return XmlEncodingFamily::Utf8;
  for (const std::string_view sign : {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv})
    if (head.starts_with(sign)) return XmlEncodingFamily::Utf16;
  return XmlEncodingFamily::Unknown;
}

bool IsEncodingName(std::string_view declared) {
  const std::string name = Lower(declared);
  std::string bare = name;
  std::erase_if(bare, [](char byte) { return (byte < 'a' || byte > 'z') && !IsDigit(byte); });
  if (bare == "utf8") return name == "utf-8" || name == "utf8";
  if (bare.starts_with("utf16"))
    return name == "utf-16" || name == "utf-16le" || name == "utf-16be" || name == "utf16";
  return true;
}

bool IsEncodingOf(XmlEncodingFamily family, std::string_view declared) {
  const std::string lower = Lower(declared);
  switch (family) {
    case XmlEncodingFamily::Unknown: return true;
    case XmlEncodingFamily::Utf8: return lower == "utf-8" || lower == "utf8";
    case XmlEncodingFamily::Utf16:
      return lower.starts_with("utf-16") || lower == "ucs-2" || lower == "iso-10646-ucs-2";
  }
  return true;
}

std::size_t FirstIllFormed(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t begin = at;
    const auto lead = static_cast<unsigned char>(bytes[at++]);
    if (lead < 0x80) continue;
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < more) return begin;
    std::uint32_t value = lead & (0x3FU >> more);
    for (const std::size_t end = at + more; at < end; ++at) {
      const auto byte = static_cast<unsigned char>(bytes[at]);
      if ((byte & 0xC0) != 0x80) return begin;
      value = value << 6 | (byte & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0x80, 0x800, 0x10000};
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < smallest[more - 1] || value > 0x10FFFF || surrogate) return begin;
  }
  return bytes.size();
}

bool IsUtf8(std::string_view bytes) { return FirstIllFormed(bytes) == bytes.size(); }

std::string BadCharacter(unsigned char byte, std::string_view encoding) {
  std::string text = "the byte 0x";
  os::AppendHex(text, byte, os::HexCase::Upper);
  return text + " begins no character of " + std::string(encoding);
}

bool AreXmlCharacters(std::string_view bytes) {
  return IsUtf8(bytes) && bytes.find("\xEF\xBF\xBE"sv) == bytes.npos &&
         bytes.find("\xEF\xBF\xBF"sv) == bytes.npos;
}

std::size_t CharactersIn(std::string_view bytes) {
  return static_cast<std::size_t>(std::ranges::count_if(
      bytes, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

}  // namespace rastrel::xml
