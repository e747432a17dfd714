#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

namespace rastrel::job {

/// Reads an unsigned decimal number as the C library's scanf does with "%u" or "%hu", but without
/// its locale and its undefined overflow: whitespace and one sign may come first, a minus sign
/// negates ("-1" is the largest number), a number of too many bits keeps the low ones, and the text
/// after the digits is ignored. Nothing if there is no digit.
template <std::unsigned_integral Number>
[[nodiscard]] constexpr std::optional<Number> ScanUnsigned(std::wstring_view text) {
  const auto begin = text.find_first_not_of(L" \t\n\v\f\r");
  if (begin == std::wstring_view::npos) return std::nullopt;
  text.remove_prefix(begin);
  const bool negative = text.front() == L'-';
  if (negative || text.front() == L'+') text.remove_prefix(1);
  std::uint64_t number = 0;
  std::size_t digits = 0;
  for (; digits < text.size() && text[digits] >= L'0' && text[digits] <= L'9'; ++digits)
    number = number * 10 + static_cast<std::uint64_t>(text[digits] - L'0');
  if (digits == 0) return std::nullopt;
  return static_cast<Number>(negative ? 0 - number : number);
}

}  // namespace rastrel::job
