#include "cutting/svg/svg_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <span>

#include "cutting/drawing/maps.h"

namespace rastrel::cutting {
namespace {

constexpr double MaximumNumber = 1e9;
constexpr double FontSize = 16;

bool IsWhitespace(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r' ||
         character == '\f';
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

char Lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

struct NamedLength {
  std::string_view unit;
  double pixels;
};

constexpr std::array Lengths{
    NamedLength{"", 1},           NamedLength{"px", 1},           NamedLength{"mm", 96 / 25.4},
    NamedLength{"cm", 96 / 2.54}, NamedLength{"in", 96},          NamedLength{"pt", 96.0 / 72},
    NamedLength{"pc", 16},        NamedLength{"q", 96 / 101.6},   NamedLength{"em", FontSize},
    NamedLength{"rem", FontSize}, NamedLength{"ex", FontSize / 2}};

double Radians(double degrees) { return std::fmod(degrees, 360) / 180 * std::numbers::pi; }

Transform Turn(double degrees) {
  const double cosine = std::cos(Radians(degrees));
  const double sine = std::sin(Radians(degrees));
  return {cosine, sine, -sine, cosine, 0, 0};
}

Transform Move(double x, double y) { return {1, 0, 0, 1, x, y}; }

std::optional<Transform> Named(std::string_view name, std::span<const double> values) {
  const std::size_t count = values.size();
  if (name == "matrix" && count == 6)
    return Transform{values[0], values[1], values[2], values[3], values[4], values[5]};
  if (name == "translate" && (count == 1 || count == 2))
    return Move(values[0], count == 2 ? values[1] : 0);
  if (name == "scale" && (count == 1 || count == 2))
    return Transform{values[0], 0, 0, values[count - 1], 0, 0};
  if (name == "rotate" && count == 1) return Turn(values[0]);
  if (name == "rotate" && count == 3)
    return Then(Then(Move(-values[1], -values[2]), Turn(values[0])), Move(values[1], values[2]));
  if (name == "skewX" && count == 1) return Transform{1, 0, std::tan(Radians(values[0])), 1, 0, 0};
  if (name == "skewY" && count == 1) return Transform{1, std::tan(Radians(values[0])), 0, 1, 0, 0};
  return {};
}

// "(1, 2)" as at most six numbers.
bool ReadArguments(SvgScanner& scanner, std::vector<double>& values) {
  values.clear();
  scanner.SkipWhitespace();
  if (!scanner.Take('(')) return false;
  scanner.SkipWhitespace();
  while (!scanner.Take(')')) {
    const auto value = scanner.Number();
    if (!value || values.size() == 6) return false;
    values.push_back(*value);
    scanner.SkipComma();
  }
  return true;
}

}  // namespace

void SvgScanner::SkipWhitespace() {
  while (IsWhitespace(Here())) ++m_At;
}

void SvgScanner::SkipComma() {
  SkipWhitespace();
  if (Take(',')) SkipWhitespace();
}

bool SvgScanner::Take(char character) {
  if (AtEnd() || m_Text[m_At] != character) return false;
  ++m_At;
  return true;
}

std::optional<double> SvgScanner::Number() {
  std::size_t end = m_At;
  const auto at = [&](std::size_t place) { return place < m_Text.size() ? m_Text[place] : '\0'; };
  if (at(end) == '+' || at(end) == '-') ++end;
  const std::size_t digits = end;
  while (IsDigit(at(end))) ++end;
  if (at(end) == '.') ++end;
  while (IsDigit(at(end))) ++end;
  if (end == digits || (end == digits + 1 && at(digits) == '.')) return {};
  // An "e" without digits is a unit's.
  if (Lower(at(end)) == 'e') {
    std::size_t exponent = end + 1;
    if (at(exponent) == '+' || at(exponent) == '-') ++exponent;
    if (IsDigit(at(exponent))) end = exponent;
    while (IsDigit(at(end))) ++end;
  }
  std::string_view number = m_Text.substr(m_At, end - m_At);
  if (number.starts_with('+')) number.remove_prefix(1);
  double value = 0;
  const auto [stop, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  const bool isTiny = error == std::errc::result_out_of_range && std::abs(value) < 1;
  if (error != std::errc() && !isTiny) return {};
  if (!std::isfinite(value) || std::abs(value) > MaximumNumber) return {};
  m_At = end;
  return value;
}

std::optional<bool> SvgScanner::Flag() {
  if (Take('0')) return false;
  if (Take('1')) return true;
  return {};
}

std::string_view SvgScanner::Word() {
  const std::size_t begin = m_At;
  const auto isPart = [](char one) {
    return IsDigit(one) || (Lower(one) >= 'a' && Lower(one) <= 'z') || one == '-' || one == '_' ||
           static_cast<unsigned char>(one) >= 0x80;
  };
  while (!AtEnd() && isPart(m_Text[m_At])) ++m_At;
  return m_Text.substr(begin, m_At - begin);
}

std::string_view SvgTrimmed(std::string_view text) {
  while (!text.empty() && IsWhitespace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsWhitespace(text.back())) text.remove_suffix(1);
  return text;
}

bool SvgSame(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, Lower, Lower);
}

std::optional<double> SvgLength(std::string_view text, double whole) {
  SvgScanner scanner(SvgTrimmed(text));
  const auto number = scanner.Number();
  if (!number) return {};
  const std::string_view unit = scanner.Rest();
  if (unit == "%") return *number / 100 * whole;
  for (const NamedLength& length : Lengths)
    if (SvgSame(unit, length.unit)) return *number * length.pixels;
  return {};
}

std::optional<Transform> SvgTransform(std::string_view text) {
  SvgScanner scanner(text);
  Transform all;
  std::vector<double> values;
  for (scanner.SkipComma(); !scanner.AtEnd(); scanner.SkipComma()) {
    const std::string_view name = scanner.Word();
    if (!ReadArguments(scanner, values)) return {};
    const auto one = Named(name, values);
    if (!one) return {};
    all = Then(*one, all);
  }
  return all;
}

std::optional<std::vector<Point>> SvgPoints(std::string_view text) {
  SvgScanner scanner(text);
  std::vector<Point> points;
  for (scanner.SkipWhitespace(); !scanner.AtEnd(); scanner.SkipComma()) {
    const auto x = scanner.Number();
    scanner.SkipComma();
    const auto y = scanner.Number();
    if (!x || !y) return {};
    points.push_back({*x, *y});
  }
  return points;
}

}  // namespace rastrel::cutting
