#include "rastrel/platform/os/number_text.h"

#include <charconv>
#include <limits>
#include <string>
#include <system_error>

namespace rastrel::os {
namespace {

template <typename Character>
constexpr bool IsDigit(Character character) {
  return character >= Character{'0'} && character <= Character{'9'};
}

// Removes leading whitespace and one sign; true if the sign is a minus.
template <typename Character>
bool TakeSign(std::basic_string_view<Character>& text) {
  const auto isSpace = [](Character character) {
    return character == Character{' '} || (character >= Character{9} && character <= Character{13});
  };
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  if (text.empty()) return false;
  const bool negative = text.front() == Character{'-'};
  if (negative || text.front() == Character{'+'}) text.remove_prefix(1);
  return negative;
}

// A number out of range is too large or too small by the place of its first digit that counts,
// which no exponent can hide: the value is either beyond 1e308 or below 1e-307.
bool IsHuge(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && text[at] == '0') ++at;
  long long place = 0;  // power of ten of the first digit that is not 0
  std::size_t digits = at;
  while (digits < text.size() && IsDigit(text[digits])) ++digits;
  if (digits > at) {
    place = static_cast<long long>(digits - at);
  } else if (digits < text.size() && text[digits] == '.') {
    for (++at; at < text.size() && text[at] == '0'; ++at) --place;
  }
  const std::size_t mark = text.find_first_of("eE");
  if (mark == std::string_view::npos) return place > 0;
  std::string_view exponent = text.substr(mark + 1);
  const bool negative = TakeSign(exponent);
  constexpr long long farAway = std::numeric_limits<long long>::max() / 4;
  long long value = 0;
  if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), value).ec != std::errc())
    value = farAway;
  return place + (negative ? -value : value) > 0;
}

template <typename Integer, typename Character>
Integer IntegerFrom(std::basic_string_view<Character> text) {
  constexpr Integer largest = std::numeric_limits<Integer>::max();
  constexpr Integer smallest = std::numeric_limits<Integer>::min();
  const bool negative = TakeSign(text);
  Integer value = 0;  // counted down from 0, where there is room for one more
  for (const Character character : text) {
    if (!IsDigit(character)) break;
    const auto digit = static_cast<Integer>(character - Character{'0'});
    if (value < (smallest + digit) / 10) return negative ? smallest : largest;
    value = static_cast<Integer>(value * 10 - digit);
  }
  if (negative) return value;
  return value == smallest ? largest : static_cast<Integer>(-value);
}

}  // namespace

double DoubleFromText(std::string_view text) {
  const bool negative = TakeSign(text);
  const bool point = text.size() > 1 && text[0] == '.' && IsDigit(text[1]);
  if (text.empty() || !(IsDigit(text[0]) || point)) return 0.0;
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    const auto length = static_cast<std::size_t>(end - text.data());
    value = IsHuge(text.substr(0, length)) ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return negative ? -value : value;
}

double DoubleFromText(std::wstring_view text) {
  const bool negative = TakeSign(text);
  if (text.empty() || !(IsDigit(text.front()) || text.front() == L'.')) return 0.0;
  std::string number(negative ? "-" : "");  // short ones are kept in the string itself
  for (const wchar_t character : text) {
    const bool part = IsDigit(character) || character == L'.' || character == L'e' ||
                      character == L'E' || character == L'-' || character == L'+';
    if (!part) break;
    number += static_cast<char>(character);
  }
  return DoubleFromText(number);
}

std::int32_t Int32FromText(std::string_view text) { return IntegerFrom<std::int32_t>(text); }
std::int32_t Int32FromText(std::wstring_view text) { return IntegerFrom<std::int32_t>(text); }
std::int64_t Int64FromText(std::string_view text) { return IntegerFrom<std::int64_t>(text); }
std::int64_t Int64FromText(std::wstring_view text) { return IntegerFrom<std::int64_t>(text); }

}  // namespace rastrel::os
