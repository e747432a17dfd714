#include "cutting/job/contour.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rastrel::cutting {
namespace {

// A quarter of a circle of 100 m, which is as far as a sheet reaches, within 0.002 mm.
constexpr int MaximumLines = 4096;

Point Between(Point a, Point b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

Point At(Point start, const Segment& curve, double t) {
  const Point a = Between(start, curve.first, t);
  const Point b = Between(curve.first, curve.second, t);
  const Point c = Between(curve.second, curve.end, t);
  return Between(Between(a, b, t), Between(b, c, t), t);
}

// How far the curve's second derivative reaches, which bounds its distance from a chord: over 1/n
// of the parameter it is at most this over 8 n².
double Bend(Point start, const Segment& curve) {
  const auto second = [](double a, double b, double c) { return 6 * (a - 2 * b + c); };
  return std::max(std::hypot(second(start.x, curve.first.x, curve.second.x),
                             second(start.y, curve.first.y, curve.second.y)),
                  std::hypot(second(curve.first.x, curve.second.x, curve.end.x),
                             second(curve.first.y, curve.second.y, curve.end.y)));
}

int LinesOf(Point start, const Segment& curve, double tolerance) {
  const double lines = std::ceil(std::sqrt(Bend(start, curve) / (8 * tolerance)));
  return lines >= 1 ? static_cast<int>(std::min<double>(lines, MaximumLines)) : 1;
}

// Where one coordinate of the curve turns, within its ends.
int Turns(double p0, double p1, double p2, double p3, std::array<double, 2>& turns) {
  const double a = -p0 + 3 * p1 - 3 * p2 + p3;
  const double b = 2 * (p0 - 2 * p1 + p2);
  const double c = p1 - p0;
  int count = 0;
  const auto take = [&](double t) {
    if (t > 0 && t < 1) turns[static_cast<std::size_t>(count++)] = t;
  };
  const double root = std::sqrt(b * b - 4 * a * c);
  if (std::isnan(root)) return 0;
  // The form that loses no digits where a is small.
  const double q = -0.5 * (b + std::copysign(root, b));
  if (q != 0) take(c / q);
  if (a != 0) take(q / a);
  return count;
}

// Half of the sum of x dy - y dx along the curve.
double SweptArea(Point p0, const Segment& curve) {
  const Point p1 = curve.first;
  const Point p2 = curve.second;
  const Point p3 = curve.end;
  const auto cross = [](Point a, Point b) { return a.x * b.y - a.y * b.x; };
  return (6 * cross(p0, p1) + 3 * cross(p0, p2) + cross(p0, p3) + 3 * cross(p1, p2) +
          3 * cross(p1, p3) + 6 * cross(p2, p3)) /
         20;
}

double CurveLength(Point start, const Segment& curve, double chord, int depth) {
  const double polygon = Distance(start, curve.first) + Distance(curve.first, curve.second) +
                         Distance(curve.second, curve.end);
  if (depth == 0 || polygon - chord <= 1e-4 * polygon) return (polygon + chord) / 2;
  const Point a = Between(start, curve.first, 0.5);
  const Point b = Between(curve.first, curve.second, 0.5);
  const Point c = Between(curve.second, curve.end, 0.5);
  const Point ab = Between(a, b, 0.5);
  const Point bc = Between(b, c, 0.5);
  const Point middle = Between(ab, bc, 0.5);
  return CurveLength(start, CurveTo(a, ab, middle), Distance(start, middle), depth - 1) +
         CurveLength(middle, CurveTo(bc, c, curve.end), Distance(middle, curve.end), depth - 1);
}

void AddPoint(std::vector<Point>& points, Point point) {
  if (points.empty() || points.back() != point) points.push_back(point);
}

}  // namespace

double Distance(Point a, Point b) { return std::hypot(b.x - a.x, b.y - a.y); }

void Box::Add(Point point) {
  if (IsEmpty()) {
    *this = {point.x, point.y, point.x, point.y};
    return;
  }
  left = std::min(left, point.x);
  right = std::max(right, point.x);
  bottom = std::min(bottom, point.y);
  top = std::max(top, point.y);
}

void Box::Add(const Box& other) {
  if (other.IsEmpty()) return;
  Add(Point{other.left, other.bottom});
  Add(Point{other.right, other.top});
}

Segment LineTo(Point end) { return {.end = end}; }

Segment CurveTo(Point first, Point second, Point end) {
  return {.end = end, .isCurve = true, .first = first, .second = second};
}

Point Contour::End() const { return closed || segments.empty() ? start : segments.back().end; }

Point Transform::Apply(Point point) const {
  return {a * point.x + c * point.y + e, b * point.x + d * point.y + f};
}

Box BoxOf(const Contour& contour) {
  Box box;
  box.Add(contour.start);
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    box.Add(segment.end);
    if (segment.isCurve) {
      std::array<double, 2> turns{};
      int count = Turns(from.x, segment.first.x, segment.second.x, segment.end.x, turns);
      for (int i = 0; i < count; ++i)
        box.Add(At(from, segment, turns[static_cast<std::size_t>(i)]));
      count = Turns(from.y, segment.first.y, segment.second.y, segment.end.y, turns);
      for (int i = 0; i < count; ++i)
        box.Add(At(from, segment, turns[static_cast<std::size_t>(i)]));
    }
    from = segment.end;
  }
  return box;
}

std::vector<Point> Flatten(const Contour& contour, double tolerance) {
  std::vector<Point> points{contour.start};
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    const int lines = segment.isCurve ? LinesOf(from, segment, tolerance) : 1;
    for (int i = 1; i < lines; ++i)
      AddPoint(points, At(from, segment, static_cast<double>(i) / lines));
    AddPoint(points, segment.end);
    from = segment.end;
  }
  if (contour.closed && points.size() > 1 && points.back() == points.front()) points.pop_back();
  return points;
}

double LengthOf(const Contour& contour) {
  double length = 0;
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    const double chord = Distance(from, segment.end);
    length += segment.isCurve ? CurveLength(from, segment, chord, 12) : chord;
    from = segment.end;
  }
  return contour.closed ? length + Distance(from, contour.start) : length;
}

double AreaOf(const Contour& contour) {
  double area = 0;
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    area += segment.isCurve ? SweptArea(from, segment)
                            : (from.x * segment.end.y - from.y * segment.end.x) / 2;
    from = segment.end;
  }
  return area + (from.x * contour.start.y - from.y * contour.start.x) / 2;
}

Contour Reversed(const Contour& contour) {
  Contour reversed{.start = contour.start, .segments = {}, .closed = contour.closed};
  if (contour.segments.empty()) return reversed;
  Point last = contour.segments.back().end;
  if (!contour.closed) {
    reversed.start = last;
  } else if (last != contour.start) {
    reversed.segments.push_back(LineTo(last));
  }
  for (std::size_t i = contour.segments.size(); i-- > 0;) {
    const Segment& segment = contour.segments[i];
    const Point end = i > 0 ? contour.segments[i - 1].end : contour.start;
    // The line that a closed contour has to its start anyway.
    if (i == 0 && contour.closed && !segment.isCurve && last != contour.start) break;
    reversed.segments.push_back(segment.isCurve ? CurveTo(segment.second, segment.first, end)
                                                : LineTo(end));
  }
  return reversed;
}

Contour Transformed(const Contour& contour, const Transform& transform) {
  Contour moved{.start = transform.Apply(contour.start), .segments = {}, .closed = contour.closed};
  moved.segments.reserve(contour.segments.size());
  for (const Segment& segment : contour.segments) {
    moved.segments.push_back(
        {.end = transform.Apply(segment.end),
         .isCurve = segment.isCurve,
         .first = segment.isCurve ? transform.Apply(segment.first) : Point{},
         .second = segment.isCurve ? transform.Apply(segment.second) : Point{}});
  }
  return moved;
}

}  // namespace rastrel::cutting
