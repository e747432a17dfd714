#include "cutting/dxf/spline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

namespace rastrel::cutting {
namespace {

constexpr int MaximumDepth = 10;

// A control point with its weight, times which x and y are.
struct Weighted {
  double x = 0;
  double y = 0;
  double w = 1;
  [[nodiscard]] Point Flat() const { return {x / w, y / w}; }
};

Weighted Between(const Weighted& a, const Weighted& b, double t) {
  return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.w + (b.w - a.w) * t};
}

// One Bézier curve of any degree.
using Bezier = std::vector<Weighted>;

Point At(Bezier curve, double t) {
  for (std::size_t count = curve.size(); count > 1; --count)
    for (std::size_t i = 0; i + 1 < count; ++i) curve[i] = Between(curve[i], curve[i + 1], t);
  return curve.front().Flat();
}

void Split(const Bezier& curve, Bezier& left, Bezier& right) {
  left.clear();
  right = curve;
  // Each pass leaves one more control point of the right half at its place, from the end on.
  for (std::size_t count = right.size(); count > 0; --count) {
    left.push_back(right.front());
    for (std::size_t i = 0; i + 1 < count; ++i) right[i] = Between(right[i], right[i + 1], 0.5);
  }
}

// The span between two knots as a Bézier curve, by the steps of de Boor.
Bezier SpanAt(const Spline& spline, std::size_t span) {
  const auto degree = static_cast<std::size_t>(spline.degree);
  const std::vector<double>& knots = spline.knots;
  const double begin = knots[span];
  const double end = knots[span + 1];
  Bezier result(degree + 1);
  // Control point i is the blossom of degree - i times `begin` and i times `end`.
  for (std::size_t ends = 0; ends <= degree; ++ends) {
    Bezier points(degree + 1);
    for (std::size_t i = 0; i <= degree; ++i) {
      const std::size_t index = span - degree + i;
      const double weight = spline.weights.empty() ? 1 : spline.weights[index];
      points[i] = {spline.controls[index].x * weight, spline.controls[index].y * weight, weight};
    }
    for (std::size_t step = 1; step <= degree; ++step) {
      const double at = step <= ends ? end : begin;
      for (std::size_t i = degree; i >= step; --i) {
        const double low = knots[span - degree + i];
        const double high = knots[span + 1 + i - step];
        points[i] = Between(points[i - 1], points[i], (at - low) / (high - low));
      }
    }
    result[ends] = points[degree];
  }
  return result;
}

bool IsPlain(const Bezier& curve) {
  return std::ranges::all_of(curve, [&](const Weighted& point) {
    return std::abs(point.w - curve.front().w) <= 1e-12 * curve.front().w;
  });
}

// A parabola is raised to the third degree.
Segment Exact(const Bezier& curve) {
  const Point start = curve.front().Flat();
  const Point end = curve.back().Flat();
  if (curve.size() == 2) return LineTo(end);
  const Point one = curve[1].Flat();
  if (curve.size() == 4) return CurveTo(one, curve[2].Flat(), end);
  const auto raised = [&](Point from) {
    return Point{from.x + (one.x - from.x) * 2 / 3, from.y + (one.y - from.y) * 2 / 3};
  };
  return CurveTo(raised(start), raised(end), end);
}

Point Along(Point from, const Weighted& a, const Weighted& b, double degree) {
  // The derivative of a rational curve at its end, a third of it.
  const Point first = a.Flat();
  const Point second = b.Flat();
  const double factor = degree * b.w / a.w / 3;
  return {from.x + (second.x - first.x) * factor, from.y + (second.y - first.y) * factor};
}

// The cubic with the same ends and the same derivatives there.
Segment Nearby(const Bezier& curve) {
  const auto degree = static_cast<double>(curve.size() - 1);
  const Point start = curve.front().Flat();
  const Point end = curve.back().Flat();
  const std::size_t last = curve.size() - 1;
  return CurveTo(Along(start, curve[0], curve[1], degree),
                 Along(end, curve[last], curve[last - 1], degree), end);
}

bool IsNear(const Bezier& curve, const Segment& segment, double tolerance) {
  const Bezier cubic{{curve.front().Flat().x, curve.front().Flat().y, 1},
                     {segment.first.x, segment.first.y, 1},
                     {segment.second.x, segment.second.y, 1},
                     {segment.end.x, segment.end.y, 1}};
  for (const double t : {0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 0.875})
    if (Distance(At(curve, t), At(cubic, t)) > tolerance) return false;
  return true;
}

void Append(Contour& contour, const Bezier& curve, double tolerance, int depth) {
  if (curve.size() <= 4 && IsPlain(curve)) {
    contour.segments.push_back(Exact(curve));
    return;
  }
  const Segment segment = Nearby(curve);
  if (depth == MaximumDepth || IsNear(curve, segment, tolerance)) {
    contour.segments.push_back(segment);
    return;
  }
  Bezier left;
  Bezier right;
  Split(curve, left, right);
  Append(contour, left, tolerance, depth + 1);
  Append(contour, right, tolerance, depth + 1);
}

}  // namespace

bool IsSound(const Spline& spline) {
  if (spline.degree < 1 || spline.degree > Spline::MaximumDegree) return false;
  const auto order = static_cast<std::size_t>(spline.degree) + 1;
  if (spline.controls.size() < order || spline.knots.size() != spline.controls.size() + order)
    return false;
  if (!spline.weights.empty() && spline.weights.size() != spline.controls.size()) return false;
  if (!std::ranges::is_sorted(spline.knots)) return false;
  if (spline.knots[order - 1] >= spline.knots[spline.controls.size()]) return false;
  return std::ranges::all_of(spline.weights,
                             [](double weight) { return weight >= 1e-6 && weight <= 1e6; });
}

Contour ContourOf(const Spline& spline, double tolerance) {
  Contour contour;
  const auto degree = static_cast<std::size_t>(spline.degree);
  bool begun = false;
  for (std::size_t span = degree; span < spline.controls.size(); ++span) {
    if (spline.knots[span] >= spline.knots[span + 1]) continue;
    const Bezier curve = SpanAt(spline, span);
    if (!begun) contour.start = curve.front().Flat();
    begun = true;
    Append(contour, curve, tolerance, 0);
  }
  return contour;
}

}  // namespace rastrel::cutting
