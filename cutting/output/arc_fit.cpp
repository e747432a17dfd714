#include "cutting/output/arc_fit.h"

#include <cmath>
#include <cstddef>

namespace rastrel::cutting {
namespace {

// A circle of ten metres differs from a straight line by a micrometre over 0.3 mm alone; beyond,
// the decimals of a center count for more than the curve.
constexpr double LargestRadius = 10'000;
constexpr int MaximumDepth = 12;
// Places of a curve that are looked at: between them it turns by little.
constexpr int Samples = 16;

Point At(Point from, const Segment& curve, double t) {
  const double u = 1 - t;
  const double a = u * u * u;
  const double b = 3 * u * u * t;
  const double c = 3 * u * t * t;
  const double d = t * t * t;
  return {a * from.x + b * curve.first.x + c * curve.second.x + d * curve.end.x,
          a * from.y + b * curve.first.y + c * curve.second.y + d * curve.end.y};
}

double Cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }

// From the line between two places.
double DistanceFromLine(Point point, Point from, Point to) {
  const double length = Distance(from, to);
  if (length < 1e-9) return Distance(point, from);
  const Point along{(to.x - from.x) / length, (to.y - from.y) / length};
  const Point beside{point.x - from.x, point.y - from.y};
  const double place = along.x * beside.x + along.y * beside.y;
  if (place < 0) return Distance(point, from);
  return place > length ? Distance(point, to) : std::abs(Cross(along, beside));
}

class Fit {
 public:
  Fit(Point from, const Segment& curve, double tolerance)
      : m_From(from), m_Curve(curve), m_Tolerance(tolerance) {}

  void Part(double begin, double end, int depth) {
    const Point from = At(m_From, m_Curve, begin);
    const Point to = end == 1 ? m_Curve.end : At(m_From, m_Curve, end);
    const FittedPart line{.end = to};
    const FittedPart arc = ArcThrough(from, At(m_From, m_Curve, (begin + end) / 2), to);
    for (const FittedPart& part : {line, arc})
      if (depth == MaximumDepth || IsNear(from, part, begin, end)) {
        m_Parts.push_back(part);
        return;
      }
    const double middle = (begin + end) / 2;
    Part(begin, middle, depth + 1);
    Part(middle, end, depth + 1);
  }

  std::vector<FittedPart> Take() { return std::move(m_Parts); }

 private:
  // Along an arc the curve's places follow each other, so that it covers all of the arc.
  [[nodiscard]] bool IsNear(Point from, const FittedPart& part, double begin, double end) const {
    const double radius = Distance(part.center, from);
    Point before = from;
    for (int i = 1; i <= Samples; ++i) {
      const Point place = At(m_From, m_Curve, begin + (end - begin) * i / Samples);
      if (!part.isArc) {
        if (DistanceFromLine(place, from, part.end) > m_Tolerance) return false;
        continue;
      }
      if (std::abs(Distance(part.center, place) - radius) > m_Tolerance) return false;
      const double turn = Cross({before.x - part.center.x, before.y - part.center.y},
                                {place.x - part.center.x, place.y - part.center.y});
      if ((turn > 0) != part.isLeft) return false;
      before = place;
    }
    return true;
  }

  Point m_From;
  Segment m_Curve;
  double m_Tolerance;
  std::vector<FittedPart> m_Parts;
};

}  // namespace

FittedPart ArcThrough(Point from, Point between, Point to) {
  FittedPart part{.end = to};
  const Point a{between.x - from.x, between.y - from.y};
  const Point b{to.x - from.x, to.y - from.y};
  const double cross = Cross(a, b);
  const double squareA = a.x * a.x + a.y * a.y;
  const double squareB = b.x * b.x + b.y * b.y;
  const Point center{(b.y * squareA - a.y * squareB) / (2 * cross),
                     (a.x * squareB - b.x * squareA) / (2 * cross)};
  // A half circle and more has the place between on the center's far side.
  const bool isShort = a.x * (a.x - b.x) + a.y * (a.y - b.y) < 0;
  if (!isShort || !(std::hypot(center.x, center.y) < LargestRadius)) return part;
  part.isArc = true;
  part.isLeft = cross > 0;
  part.center = {from.x + center.x, from.y + center.y};
  return part;
}

std::vector<FittedPart> ArcsOf(Point from, const Segment& curve, double tolerance) {
  const double sum = from.x + from.y + curve.first.x + curve.first.y + curve.second.x +
                     curve.second.y + curve.end.x + curve.end.y;
  if (!std::isfinite(sum)) return {{.end = curve.end}};
  Fit fit(from, curve, tolerance);
  // An S is no single arc, and its middle may be on the line between its ends.
  fit.Part(0, 0.5, 1);
  fit.Part(0.5, 1, 1);
  return fit.Take();
}

}  // namespace rastrel::cutting
