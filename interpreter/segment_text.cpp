#include "interpreter/segment_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace rastrel::interpreter {

std::string_view NextWord(std::string_view& text) {
  const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
  text.remove_prefix(start);
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  return word;
}

std::optional<double> ReadNumber(std::string_view word) {
  double number = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc() || stop != word.data() + word.size() || !std::isfinite(number))
    return {};
  return number;
}

std::optional<Segment> SegmentReader::Next() {
  const std::string_view word = NextWord(m_Rest);
  m_AtEnd = word.empty();
  Segment segment;
  segment.count = word == "c" ? 3 : word == "m" || word == "l" ? 1 : 0;
  if (segment.count == 0 && word != "h") return {};
  segment.letter = word.front();
  for (std::size_t i = 0; i < segment.count; ++i) {
    const auto x = ReadNumber(NextWord(m_Rest));
    const auto y = ReadNumber(NextWord(m_Rest));
    if (!x || !y) return {};
    segment.storage[i] = {*x, *y};
  }
  return segment;
}

}  // namespace rastrel::interpreter
