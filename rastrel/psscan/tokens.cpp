#include "rastrel/psscan/tokens.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>

#include "rastrel/platform/os/text.h"

namespace rastrel::psscan {
namespace {

template <typename Character>
constexpr bool IsDigit(Character character) {
  return character >= '0' && character <= '9';
}

template <typename Character>
constexpr bool IsBlank(Character character) {
  return character == ' ' || character == '\t';
}

// The same for bytes and for the wide text of a string's escapes.
template <typename Character>
std::size_t ReadInteger(std::basic_string_view<Character> text, int& value) {
  std::size_t begin = 0;
  while (begin < text.size() && (IsBlank(text[begin]) || text[begin] == '{')) ++begin;
  std::size_t end = begin;
  const bool negative = end < text.size() && text[end] == '-';
  if (negative || (end < text.size() && text[end] == '+')) ++end;
  std::int64_t number = 0;
  constexpr std::int64_t Limit = std::int64_t{std::numeric_limits<int>::max()} + 1;
  for (bool whole = true; end < text.size() && (IsDigit(text[end]) || text[end] == '.'); ++end) {
    whole = whole && text[end] != '.';
    if (whole) number = std::min(number * 10 + (text[end] - '0'), Limit);
  }
  if (end == begin) return 0;
  value = static_cast<int>(negative ? -number : std::min(number, Limit - 1));
  return end;
}

// Resolves the escapes of a string in place. A character that an escape gave is not looked at
// again.
void ResolveEscapes(CString& text) {
  std::size_t target = text.find(L'\\');
  if (target == CString::npos) return;
  for (std::size_t index = target; index < text.size(); ++index) {
    wchar_t character = text[index];
    if (character == L'\\' && index + 1 < text.size()) {
      int value = 0;
      if (text[index + 1] == L'\\') {
        ++index;
      } else if (const std::size_t consumed =
                     ReadInteger(std::wstring_view(text).substr(index + 1), value)) {
        // The characters of the interface's strings have 16 bits.
        character = static_cast<std::uint16_t>(static_cast<std::int8_t>(value));
        index += consumed;
      }
    }
    text[target++] = character;
  }
  text.resize(target);
}

// True if a number, whose value doesn't fit, is too large and not too small.
bool IsHuge(std::string_view number) {
  const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, exponentAt);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t significant = digits.find_first_of("123456789");
  if (significant == std::string_view::npos) return false;
  long long exponent = 0;
  if (exponentAt < number.size()) {
    std::string_view text = number.substr(exponentAt + 1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const auto read = std::from_chars(text.data(), text.data() + text.size(), exponent);
    // Its sign alone decides then.
    if (read.ec == std::errc::result_out_of_range) return !negative;
    if (negative) exponent = -exponent;
  }
  return static_cast<long long>(point) - static_cast<long long>(significant) + exponent > 0;
}

}  // namespace

std::size_t IntegerToken(std::string_view text, int& value) { return ReadInteger(text, value); }

RawToken FindTextToken(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  if (begin == text.size() || text[begin] != '(') {
    const std::size_t end = std::min(text.find_first_of(" \t", begin), text.size());
    return {.bytes = text.substr(begin, end - begin), .consumed = end};
  }
  std::size_t end = begin + 1;
  for (int depth = 1; depth > 0 && end < text.size();) {
    end = std::min(text.find_first_of("()", end + 1), text.size());
    depth += end < text.size() && text[end] == '(' ? 1 : -1;
  }
  return {.bytes = text.substr(begin + 1, end - begin - 1),
          .isString = true,
          .consumed = std::min(end + 1, text.size())};
}

std::size_t TextToken(std::string_view text, CString& token) {
  const RawToken raw = FindTextToken(text);
  token = os::WideFromAnsi(raw.bytes);
  if (raw.isString) ResolveEscapes(token);
  return raw.consumed;
}

double NumberOf(std::wstring_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(L" \t\n\v\f\r"), text.size());
  text.remove_prefix(begin);
  const bool negative = text.starts_with(L'-');
  if (negative || text.starts_with(L'+')) text.remove_prefix(1);
  const std::size_t end = std::min(text.find_first_not_of(L"0123456789.eE+-"), text.size());
  const std::string number(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end));
  double value = 0;
  // A second sign is no number. Words such as "inf" never get here.
  if (number.starts_with('-')) return 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
  if (read.ec == std::errc::invalid_argument) return 0;
  if (read.ec == std::errc::result_out_of_range)
    value = IsHuge({number.data(), read.ptr}) ? std::numeric_limits<double>::infinity() : 0;
  return negative ? -value : value;
}

std::string_view FromFirstParenthesis(std::string_view line) {
  return line.substr(std::min(line.find_first_of("()"), line.size()));
}

bool IsDeferred(std::string_view line) { return FromFirstParenthesis(line).starts_with("(atend)"); }

}  // namespace rastrel::psscan
