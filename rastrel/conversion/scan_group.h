#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// Reading groups of numbers as the C library's scanf reads them (ISO C, 7.21.6.2), without its
/// locale. White space in front of a number is passed over, none is needed between two, and what
/// follows the last is not looked at. A number that its type does not hold, on which C says
/// nothing, counts as none.
namespace rastrel::conversion {

/// As many of "%i" as the span is long: decimal, octal behind 0, hexadecimal behind 0x. False, and
/// nothing stored, if the text does not hold them all.
[[nodiscard]] bool ScanIntegers(std::wstring_view text, std::span<std::int32_t> numbers);

/// As many of "%f": decimal with or without an exponent, hexadecimal behind 0x, infinity, NaN.
[[nodiscard]] bool ScanFloats(std::wstring_view text, std::span<float> numbers);

}  // namespace rastrel::conversion
