#include "cutting/clean/line_contact.h"

#include <algorithm>
#include <cmath>

namespace rastrel::cutting::clean {
namespace {

// Sine of the angle from which a line goes across another, and not beside it. A curve that touches
// for half a millimeter leaves the tolerance at less.
constexpr double SteepestBeside = 0.2;

struct Interval {
  double from = 0;
  double to = -1;
  [[nodiscard]] bool IsEmpty() const { return !(to >= from); }
};

// Where low <= start + slope s <= high.
Interval Within(double start, double slope, double low, double high, Interval s) {
  if (slope == 0) return start >= low && start <= high ? s : Interval{};
  const double a = (low - start) / slope;
  const double b = (high - start) / slope;
  return {std::max(s.from, std::min(a, b)), std::min(s.to, std::max(a, b))};
}

Interval Hull(Interval a, Interval b) {
  if (a.IsEmpty()) return b;
  if (b.IsEmpty()) return a;
  return {std::min(a.from, b.from), std::max(a.to, b.to)};
}

// Where the line from (x, y) in the unit direction (u, v) is within `radius` of the origin.
Interval InCircle(double x, double y, double u, double v, double radius, Interval s) {
  const double middle = -(x * u + y * v);
  const double aside = x * v - y * u;
  if (std::abs(aside) > radius) return {};
  const double half = std::sqrt(radius * radius - aside * aside);
  return {std::max(s.from, middle - half), std::min(s.to, middle + half)};
}

Point Difference(GridPoint a, GridPoint b) {
  return {static_cast<double>(a.x - b.x) / GridUnits, static_cast<double>(a.y - b.y) / GridUnits};
}

// Whether the direction from `x` to `c` lies strictly between those to `a` and to `b`,
// counterclockwise from `a`.
bool IsBetween(GridPoint x, GridPoint a, GridPoint b, GridPoint c) {
  const int afterA = SideOf(x, a, c);
  const int beforeB = SideOf(x, c, b);
  return SideOf(x, a, b) > 0 ? afterA > 0 && beforeB > 0 : afterA > 0 || beforeB > 0;
}

bool IsSameWay(GridPoint x, GridPoint a, GridPoint b) {
  if (SideOf(x, a, b) != 0) return false;
  return ((a.x > x.x) == (b.x > x.x) && (a.x < x.x) == (b.x < x.x)) &&
         ((a.y > x.y) == (b.y > x.y) && (a.y < x.y) == (b.y < x.y));
}

// One contour comes from `a` through `x` to `b`, the other from `c` to `d`.
bool CrossIn(GridPoint x, GridPoint a, GridPoint b, GridPoint c, GridPoint d) {
  if (IsSameWay(x, a, b) || IsSameWay(x, c, d)) return false;
  for (const GridPoint way : {a, b}) {
    if (IsSameWay(x, way, c) || IsSameWay(x, way, d)) return false;
  }
  return IsBetween(x, a, b, c) != IsBetween(x, a, b, d);
}

bool IsInside(const FlatLine& line, GridPoint point) {
  if (point == line.from || point == line.to) return false;
  return std::min(line.from.x, line.to.x) <= point.x &&
         point.x <= std::max(line.from.x, line.to.x) &&
         std::min(line.from.y, line.to.y) <= point.y &&
         point.y <= std::max(line.from.y, line.to.y) && SideOf(line.from, line.to, point) == 0;
}

std::optional<Point> At(GridPoint x, bool crosses) {
  if (!crosses) return std::nullopt;
  return Millimeters(x);
}

Point Meeting(const FlatLine& a, const FlatLine& b) {
  const Point u = Difference(a.to, a.from);
  const Point v = Difference(b.to, b.from);
  const Point w = Difference(b.from, a.from);
  const double t = std::clamp((w.x * v.y - w.y * v.x) / (u.x * v.y - u.y * v.x), 0.0, 1.0);
  const Point from = Millimeters(a.from);
  return {from.x + u.x * t, from.y + u.y * t};
}

}  // namespace

std::optional<LineContact> ContactOf(const FlatLine& line, const FlatLine& other, double tolerance,
                                     double low, double high) {
  const Interval whole{std::max(0.0, low), std::min(line.length, high)};
  if (whole.IsEmpty()) return std::nullopt;
  const Point along = Difference(line.to, line.from);
  const Point across = Difference(other.to, other.from);
  const double vx = across.x / other.length;
  const double vy = across.y / other.length;
  const Point start = Difference(line.from, other.from);
  // The line in the frame of the other, which goes from 0 along x.
  const double x = start.x * vx + start.y * vy;
  const double y = start.y * vx - start.x * vy;
  const double u = (along.x * vx + along.y * vy) / line.length;
  const double v = (along.y * vx - along.x * vy) / line.length;
  const Interval beside = Within(x, u, 0, other.length, Within(y, v, -tolerance, tolerance, whole));
  const Interval near = Hull(beside, Hull(InCircle(x, y, u, v, tolerance, whole),
                                          InCircle(x - other.length, y, u, v, tolerance, whole)));
  if (near.IsEmpty()) return std::nullopt;
  LineContact contact{.from = near.from, .to = near.to};
  if (!beside.IsEmpty() && std::abs(v) <= SteepestBeside) {
    const double first = y + v * beside.from;
    const double last = y + v * beside.to;
    contact.beside = beside.to - beside.from;
    contact.distance = contact.beside * (first + last) / 2;
    contact.square = contact.beside * (first * first + first * last + last * last) / 3;
  }
  return contact;
}

std::optional<Point> CrossingOf(const LineInContour& first, const LineInContour& second) {
  const FlatLine& a = *first.line;
  const FlatLine& b = *second.line;
  if (a.from == b.from) {
    return At(a.from, first.before != nullptr && second.before != nullptr &&
                          CrossIn(a.from, first.before->from, a.to, second.before->from, b.to));
  }
  if (IsInside(a, b.from))
    return At(b.from,
              second.before != nullptr && CrossIn(b.from, a.from, a.to, second.before->from, b.to));
  if (IsInside(b, a.from))
    return At(a.from,
              first.before != nullptr && CrossIn(a.from, first.before->from, a.to, b.from, b.to));
  if (SideOf(a.from, a.to, b.from) * SideOf(a.from, a.to, b.to) >= 0) return std::nullopt;
  if (SideOf(b.from, b.to, a.from) * SideOf(b.from, b.to, a.to) >= 0) return std::nullopt;
  return Meeting(a, b);
}

}  // namespace rastrel::cutting::clean
