#include "interpreter/segment_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace rastrel::interpreter {
namespace {

constexpr double UnitsPerPixel = 256;

}  // namespace

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

std::optional<double> ReadCoordinate(std::string_view word) {
  constexpr int Base = 14;
  constexpr std::uint64_t ShortSign = std::uint64_t{1} << 31;
  constexpr std::uint64_t ShortEnd = std::uint64_t{1} << 32;
  std::uint64_t bits = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), bits, Base);
  if (error != std::errc() || stop != word.data() + word.size()) return {};
  if (bits >= ShortSign && bits < ShortEnd) bits -= ShortEnd;
  const auto number = static_cast<std::int64_t>(bits);
  if (number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max())
    return {};
  return static_cast<double>(number) / UnitsPerPixel;
}

std::optional<Segment> SegmentReader::Next() {
  const std::string_view word = NextWord(m_Rest);
  m_AtEnd = word.empty();
  Segment segment;
  segment.count = word == "c" ? 3 : word == "m" || word == "l" ? 1 : 0;
  if (segment.count == 0 && word != "h") return {};
  segment.letter = word.front();
  for (std::size_t i = 0; i < segment.count; ++i) {
    const auto x = ReadCoordinate(NextWord(m_Rest));
    const auto y = ReadCoordinate(NextWord(m_Rest));
    if (!x || !y) return {};
    segment.storage[i] = {*x, *y};
  }
  return segment;
}

bool SegmentList::Append(std::string_view text) {
  const Mark before = End();
  SegmentReader reader(text);
  while (const auto segment = reader.Next()) {
    m_Letters += segment->letter;
    const auto points = segment->Points();
    m_Points.insert(m_Points.end(), points.begin(), points.end());
  }
  if (reader.AtEnd()) return true;
  m_Letters.resize(before.letters);
  m_Points.resize(before.points);
  return false;
}

SegmentView SegmentList::Between(const Mark& first, const Mark& last) const {
  return {std::string_view(m_Letters).substr(first.letters, last.letters - first.letters),
          std::span(m_Points).subspan(first.points, last.points - first.points)};
}

}  // namespace rastrel::interpreter
