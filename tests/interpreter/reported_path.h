#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string>

namespace rastrel::test {

/// A coordinate in pixels as the prolog reports it: its 1/256 as an unsigned number of 64 bits, to
/// the base of 14.
inline std::string ReportedCoordinate(double pixels) {
  const auto number = static_cast<std::uint64_t>(static_cast<std::int64_t>(pixels * 256));
  std::array<char, 24> digits;
  auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 14).ptr;
  std::string text(digits.data(), end);
  for (char& digit : text)
    if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
  return text;
}

/// The prolog's report of a text whose coordinates are decimals: "S 2 0 m 1 2.5 l 3 4 h ". Those
/// are the numbers after a small letter; line width and color, and whatever is no number, stay as
/// they are.
inline std::string Reported(const std::string& text) {
  std::istringstream words(text);
  std::string reported;
  bool isSegment = false;
  for (std::string word; words >> word;) {
    double number = 0;
    const auto read = std::from_chars(word.data(), word.data() + word.size(), number);
    const bool isNumber = read.ec == std::errc() && read.ptr == word.data() + word.size() &&
                          number > -1e7 && number < 1e7;
    if (!isNumber && word.size() == 1) isSegment = word[0] >= 'a' && word[0] <= 'z';
    reported += (isNumber && isSegment ? ReportedCoordinate(number) : word) + " ";
  }
  return reported;
}

}  // namespace rastrel::test
