#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// Reads groups of numbers as the C library's scanf does (ISO C, 7.21.6.2), without its locale.
/// Whitespace before a number is skipped, none is needed between two, and the text after the last
/// is ignored. A number out of its type's range, which C leaves undefined, counts as none.
namespace rastrel::conversion {

/// As many of "%i" as the span is long: decimal, octal after 0, hexadecimal after 0x. False, and
/// nothing is stored, if the text does not have them all.
[[nodiscard]] bool ScanIntegers(std::wstring_view text, std::span<std::int32_t> numbers);

/// As many of "%f": decimal with or without an exponent, hexadecimal after 0x, infinity, NaN.
[[nodiscard]] bool ScanFloats(std::wstring_view text, std::span<float> numbers);

/// As many of "%d" as the span is long, with a comma between two, directly after the first:
/// decimal. False as above.
[[nodiscard]] bool ScanIntegerList(std::wstring_view text, std::span<std::int32_t> numbers);

/// As many of "%lf" in the same way.
[[nodiscard]] bool ScanDecimalList(std::wstring_view text, std::span<double> numbers);

}  // namespace rastrel::conversion
