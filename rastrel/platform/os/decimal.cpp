#include "rastrel/platform/os/decimal.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <system_error>

namespace rastrel::os {
namespace {

// Products up to that one are off by less than a four-millionth, so a rest that is further from a
// half rounds as the exact number does.
constexpr double QuickLimit = 2147483648.0;
constexpr double HalfMargin = 1e-6;
constexpr double Powers[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
constexpr unsigned Base = 10;

// A sign, ten digits and a point fit.
using QuickDigits = std::array<char, 16>;

// Files of cut paths have millions of numbers, most of them small, of few places and far from the
// middle between two roundings. Such a one is written as an integer with a point in it. The place
// of its first character; nothing if it is none of these.
char* WriteQuickly(QuickDigits& digits, double value, int places) {
  if (places < 0 || places >= static_cast<int>(std::size(Powers))) return nullptr;
  const double scaled = std::abs(value) * Powers[places];
  if (!(scaled < QuickLimit)) return nullptr;
  auto number = static_cast<std::uint64_t>(scaled);
  const double rest = scaled - static_cast<double>(number);
  if (std::abs(rest - 0.5) < HalfMargin) return nullptr;
  if (rest > 0.5) ++number;
  const bool negative = value < 0 && number != 0;
  char* first = digits.data() + digits.size();
  bool hasPlaces = false;
  for (int place = 0; place < places; ++place, number /= Base) {
    const auto digit = static_cast<char>(number % Base);
    hasPlaces = hasPlaces || digit != 0;
    if (hasPlaces) *--first = static_cast<char>('0' + digit);
  }
  if (hasPlaces) *--first = '.';
  do {
    *--first = static_cast<char>('0' + number % Base);
    number /= Base;
  } while (number != 0);
  if (negative) *--first = '-';
  return first;
}

std::string ExactDecimal(double value, int places) {
  // The largest double has 309 digits before its point.
  std::array<char, 400> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::fixed, places);
  std::string text(digits.data(), error == std::errc() ? end : digits.data());
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

}  // namespace

void AppendShortDecimal(std::string& text, double value, int places) {
  QuickDigits digits;
  if (const char* const first = WriteQuickly(digits, value, places); first != nullptr) {
    text.append(first, static_cast<std::size_t>(digits.data() + digits.size() - first));
  } else {
    text += ExactDecimal(value, places);
  }
}

std::string ShortDecimal(double value, int places) {
  std::string text;
  AppendShortDecimal(text, value, places);
  return text;
}

std::string ShortestDecimal(double value) {
  // A sign, 17 digits, a point and an exponent of three digits fit.
  std::array<char, 32> digits;
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

}  // namespace rastrel::os
