#include "rastrel/platform/os/hex.h"

namespace rastrel::os {

void AppendHex(std::string& text, unsigned char byte, HexCase letters) {
  const char* const digits = letters == HexCase::Lower ? "0123456789abcdef" : "0123456789ABCDEF";
  text += digits[byte >> 4];
  text += digits[byte & 15];
}

std::string HexFromBytes(std::string_view bytes, HexCase letters) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char byte : bytes) AppendHex(text, static_cast<unsigned char>(byte), letters);
  return text;
}

std::optional<unsigned> HexDigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A' + 10);
  return std::nullopt;
}

std::optional<unsigned char> ByteFromHex(char high, char low) {
  const auto first = HexDigitValue(high);
  const auto second = HexDigitValue(low);
  if (!first || !second) return std::nullopt;
  return static_cast<unsigned char>(*first * 16 + *second);
}

std::optional<unsigned char> ByteFromHex(char high, char low, HexCase letters) {
  const auto isOther = [letters](char digit) {
    return letters == HexCase::Lower ? digit >= 'A' && digit <= 'F' : digit >= 'a' && digit <= 'f';
  };
  if (isOther(high) || isOther(low)) return std::nullopt;
  return ByteFromHex(high, low);
}

}  // namespace rastrel::os
