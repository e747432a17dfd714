#pragma once

#include <cstdint>
#include <string_view>

/// Reads numbers as the platform's `_wtof`, `_wtoi` and `_wtoi64` do: leading whitespace (space,
/// tab, line feed, vertical tab, form feed, carriage return), one sign, then the longest part that
/// is a decimal number. The rest of the text is ignored; without a number the result is 0. The
/// decimal point is a full stop, whatever the locale. Bytes are UTF-8.
namespace rastrel::os {

/// Digits, a point and digits, and an exponent (e or E, sign, digits) if it is whole. Rounded to
/// the nearest; too large is an infinity of its sign, too small is 0. Names of numbers and
/// hexadecimal ones are no numbers.
[[nodiscard]] double DoubleFromText(std::string_view text);
[[nodiscard]] double DoubleFromText(std::wstring_view text);

/// Digits. Too large or too small is the largest or smallest number that there is.
[[nodiscard]] std::int32_t Int32FromText(std::string_view text);
[[nodiscard]] std::int32_t Int32FromText(std::wstring_view text);
/// The same with 64 bits.
[[nodiscard]] std::int64_t Int64FromText(std::string_view text);
[[nodiscard]] std::int64_t Int64FromText(std::wstring_view text);

}  // namespace rastrel::os
