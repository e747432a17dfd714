#include "rastrel/platform/os/decimal.h"

#include <array>
#include <charconv>
#include <system_error>

namespace rastrel::os {

std::string ShortDecimal(double value, int places) {
  // The largest double has 309 digits before its point.
  std::array<char, 400> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                          std::chars_format::fixed, places);
  std::string text(digits.data(), error == std::errc() ? end : digits.data());
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string ShortestDecimal(double value) {
  // A sign, 17 digits, a point and an exponent of three digits fit.
  std::array<char, 32> digits;
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

}  // namespace rastrel::os
