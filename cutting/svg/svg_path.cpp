#include "cutting/svg/svg_path.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <utility>

#include "cutting/drawing/arc.h"
#include "cutting/drawing/maps.h"
#include "cutting/svg/svg_text.h"

namespace rastrel::cutting {
namespace {

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
Point operator*(Point a, double factor) { return {a.x * factor, a.y * factor}; }

// Numbers of a command, of which the third and fourth of an arc are followed by two flags.
std::size_t NumbersOf(char command) {
  switch (command) {
    case 'h':
    case 'v': return 1;
    case 'm':
    case 'l':
    case 't': return 2;
    case 's':
    case 'q': return 4;
    case 'c': return 6;
    case 'a': return 7;
    default: return 0;
  }
}

bool IsCommand(char letter) {
  return std::string_view("MmZzLlHhVvCcSsQqTtAa").find(letter) != std::string_view::npos;
}

class PathReader {
 public:
  PathReader(std::string_view data, const Transform& map)
      : m_Scanner(data), m_Size(data.size()), m_Map(map) {}

  Expected<std::vector<Contour>> Read();

 private:
  [[nodiscard]] bool ReadNumbers(char kind);
  [[nodiscard]] Failure FailHere(const std::string& why) const {
    const std::size_t at = m_Size - m_Scanner.Rest().size();
    return FailureOf("the path's data at character " + std::to_string(at + 1) + ": " + why,
                     FailureCode::BadInput);
  }
  void Draw(char kind, Point origin);
  void DrawArc(Point end);
  void Begin();
  void LineTo(Point end);
  void CurveTo(Point first, Point second, Point end);
  void Close();
  // The numbers from `index` on as a place.
  [[nodiscard]] Point At(std::size_t index, Point origin) const {
    return Point{m_Numbers.at(index), m_Numbers.at(index + 1)} + origin;
  }

  SvgScanner m_Scanner;
  std::size_t m_Size;
  const Transform& m_Map;
  std::array<double, 7> m_Numbers{};
  std::vector<Contour> m_Contours;
  Point m_Here;           // the current point
  Point m_Start;          // where the subpath begins
  Point m_Control;        // the last control point, for the smooth curves
  char m_Last = 0;        // the command before, in lower case
  bool m_IsOpen = false;  // the last contour goes on
};

bool PathReader::ReadNumbers(char kind) {
  const std::size_t count = NumbersOf(kind);
  for (std::size_t index = 0; index < count; ++index) {
    if (index > 0) m_Scanner.SkipComma();
    if (kind == 'a' && (index == 3 || index == 4)) {
      const auto flag = m_Scanner.Flag();
      if (!flag) return false;
      m_Numbers.at(index) = *flag ? 1 : 0;
      continue;
    }
    const auto number = m_Scanner.Number();
    if (!number) return false;
    m_Numbers.at(index) = *number;
  }
  return true;
}

void PathReader::Begin() {
  if (m_IsOpen) return;
  m_Contours.push_back({.start = m_Map.Apply(m_Here), .segments = {}});
  m_IsOpen = true;
}

void PathReader::LineTo(Point end) {
  Begin();
  m_Contours.back().segments.push_back(cutting::LineTo(m_Map.Apply(end)));
  m_Here = end;
}

void PathReader::CurveTo(Point first, Point second, Point end) {
  Begin();
  m_Contours.back().segments.push_back(
      cutting::CurveTo(m_Map.Apply(first), m_Map.Apply(second), m_Map.Apply(end)));
  m_Here = end;
}

void PathReader::Close() {
  // A moved-to point that is closed at once is a dot.
  if (!m_IsOpen && m_Last == 'm') Begin();
  if (m_IsOpen) m_Contours.back().closed = true;
  m_IsOpen = false;
  m_Here = m_Start;
}

// From the two ends to the center, and with radii that are too small made just large enough.
void PathReader::DrawArc(Point end) {
  double rx = std::abs(m_Numbers[0]);
  double ry = std::abs(m_Numbers[1]);
  if (end == m_Here) return;
  if (rx < 1e-12 || ry < 1e-12) return LineTo(end);
  const double turn = std::fmod(m_Numbers[2], 360) / 180 * std::numbers::pi;
  const Point axis{std::cos(turn), std::sin(turn)};
  const Point half = (m_Here - end) * 0.5;
  // In units of the radii, where the ellipse is a circle of the radius 1.
  Point unit{(axis.x * half.x + axis.y * half.y) / rx, (axis.x * half.y - axis.y * half.x) / ry};
  const double length = std::hypot(unit.x, unit.y);
  if (length > 1) {
    rx *= length;
    ry *= length;
    unit = unit * (1 / length);
  }
  const double square = unit.x * unit.x + unit.y * unit.y;
  double away = std::sqrt(std::max(0.0, 1 - square) / square);
  const bool isLarge = m_Numbers[3] != 0;
  const bool isPositive = m_Numbers[4] != 0;
  if (isLarge == isPositive) away = -away;
  const Point center{away * unit.y, -away * unit.x};
  const double from = std::atan2(unit.y - center.y, unit.x - center.x);
  double angle = std::atan2(-unit.y - center.y, -unit.x - center.x) - from;
  if (isPositive && angle < 0) angle += 2 * std::numbers::pi;
  if (!isPositive && angle > 0) angle -= 2 * std::numbers::pi;
  const Point u{axis.x * rx, axis.y * rx};
  const Point v{-axis.y * ry, axis.x * ry};
  const Point middle = (m_Here + end) * 0.5 + u * center.x + v * center.y;
  Begin();
  AppendArc(m_Contours.back(), {m_Map.Apply(middle), Turned(m_Map, u), Turned(m_Map, v)}, from,
            from + angle);
  m_Contours.back().segments.back().end = m_Map.Apply(end);
  m_Here = end;
}

// `origin` is the place that the numbers count from.
void PathReader::Draw(char kind, Point origin) {
  const Point here = m_Here;
  Point control = here;
  switch (kind) {
    case 'm':
      m_IsOpen = false;
      m_Here = m_Start = At(0, origin);
      break;
    case 'l': LineTo(At(0, origin)); break;
    case 'h': LineTo({m_Numbers[0] + origin.x, here.y}); break;
    case 'v': LineTo({here.x, m_Numbers[0] + origin.y}); break;
    case 'c':
      control = At(2, origin);
      CurveTo(At(0, origin), control, At(4, origin));
      break;
    case 's': {
      const bool isSmooth = m_Last == 'c' || m_Last == 's';
      const Point first = isSmooth ? here + here - m_Control : here;
      control = At(0, origin);
      CurveTo(first, control, At(2, origin));
      break;
    }
    case 'q':
    case 't': {
      const bool isSmooth = m_Last == 'q' || m_Last == 't';
      control = kind == 'q' ? At(0, origin) : isSmooth ? here + here - m_Control : here;
      const Point end = At(kind == 'q' ? 2 : 0, origin);
      CurveTo(here + (control - here) * (2.0 / 3), end + (control - end) * (2.0 / 3), end);
      break;
    }
    case 'a': DrawArc(At(5, origin)); break;
    default: Close(); break;
  }
  m_Control = control;
  m_Last = kind;
}

Expected<std::vector<Contour>> PathReader::Read() {
  m_Scanner.SkipWhitespace();
  char command = 0;
  while (!m_Scanner.AtEnd()) {
    const char letter = m_Scanner.Here();
    if (IsCommand(letter)) {
      static_cast<void>(m_Scanner.Take(letter));
      command = letter;
      m_Scanner.SkipWhitespace();
    } else if (command == 0 || command == 'z' || command == 'Z') {
      return FailHere("a command is expected here");
    } else if (command == 'm' || command == 'M') {
      command = command == 'm' ? 'l' : 'L';  // further places of a move are lines
    }
    if (m_Last == 0 && command != 'm' && command != 'M') return FailHere("a path begins with 'M'");
    const bool isRelative = command >= 'a';
    const char kind = isRelative ? command : static_cast<char>(command + 32);
    if (!ReadNumbers(kind)) return FailHere("a number is expected here");
    Draw(kind, isRelative ? m_Here : Point{});
    m_Scanner.SkipComma();
  }
  return std::move(m_Contours);
}

}  // namespace

Expected<std::vector<Contour>> SvgPath(std::string_view data, const Transform& map) {
  return PathReader(data, map).Read();
}

}  // namespace rastrel::cutting
