#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Hexadecimal digits, two a byte.
namespace rastrel::os {

/// The case of the digits 10 to 15.
enum class HexCase { Lower, Upper };

/// Appends the two digits of a byte.
void AppendHex(std::string& text, unsigned char byte, HexCase letters = HexCase::Lower);

/// The digits of all bytes, without anything between.
[[nodiscard]] std::string HexFromBytes(std::string_view bytes, HexCase letters = HexCase::Lower);

/// 0 to 15 for a digit of either case; nothing for anything else.
[[nodiscard]] std::optional<unsigned> HexDigitValue(char digit);

/// The byte of two digits of either case; nothing if one is none.
[[nodiscard]] std::optional<unsigned char> ByteFromHex(char high, char low);
/// The same for a format in which letters have one case: nothing if one has the other.
[[nodiscard]] std::optional<unsigned char> ByteFromHex(char high, char low, HexCase letters);

}  // namespace rastrel::os
