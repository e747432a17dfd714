#include "rastrel/platform/os/base64.h"

#include <array>
#include <cstdint>

namespace rastrel::os {

namespace {

constexpr std::string_view Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t NoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> DigitTable() {
  std::array<std::uint8_t, 256> table{};
  table.fill(NoDigit);
  for (std::size_t i = 0; i < Alphabet.size(); ++i) {
    table[static_cast<unsigned char>(Alphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> Digits = DigitTable();

std::uint32_t ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

}  // namespace

std::string Base64FromBytes(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::uint32_t group =
        ByteAt(bytes, at) << 16 | ByteAt(bytes, at + 1) << 8 | ByteAt(bytes, at + 2);
    text += Alphabet[group >> 18];
    text += Alphabet[group >> 12 & 63];
    text += at + 1 < bytes.size() ? Alphabet[group >> 6 & 63] : '=';
    text += at + 2 < bytes.size() ? Alphabet[group & 63] : '=';
  }
  return text;
}

std::optional<std::string> BytesFromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t at = 0; at < text.size(); at += 4) {
    const bool last = at + 4 == text.size();
    const std::size_t pads = !last || text[at + 3] != '=' ? 0 : text[at + 2] == '=' ? 2 : 1;
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const std::uint8_t digit =
          i >= 4 - pads ? 0 : Digits[static_cast<unsigned char>(text[at + i])];
      if (digit == NoDigit) return std::nullopt;
      group = group << 6 | digit;
    }
    // Bits that belong to no byte must be 0, or two texts would mean the same.
    if ((pads == 1 && (group & 0xFF) != 0) || (pads == 2 && (group & 0xFFFF) != 0)) {
      return std::nullopt;
    }
    for (std::size_t i = 0; i < 3 - pads; ++i) {
      bytes += static_cast<char>(group >> (16 - 8 * i) & 0xFF);
    }
  }
  return bytes;
}

}  // namespace rastrel::os
