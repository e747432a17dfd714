#include "children/jobspool/flatten.h"

#include <algorithm>
#include <cmath>

namespace rastrel::jobspool {
namespace {

// How far three points in a row are from lying evenly on a line.
double Bend(const Point& a, const Point& b, const Point& c) {
  return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
}

Point At(const std::array<Point, 4>& curve, double t) {
  const double u = 1 - t;
  const std::array<double, 4> weights{u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
  Point point;
  for (std::size_t i = 0; i < 4; ++i) {
    point.x += weights[i] * curve[i].x;
    point.y += weights[i] * curve[i].y;
  }
  return point;
}

}  // namespace

void AppendCurve(std::vector<Point>& points, const std::array<Point, 4>& curve, double tolerance) {
  // A chord over a piece of length h in t lies at most h * h / 8 times the largest second
  // derivative beside its curve, and that is 6 times the largest bend.
  const double bend =
      std::max(Bend(curve[0], curve[1], curve[2]), Bend(curve[1], curve[2], curve[3]));
  const double wanted = std::ceil(std::sqrt(0.75 * bend / tolerance));
  const auto count = static_cast<unsigned>(std::clamp(wanted, 1.0, double{LinesOfCurve}));
  for (unsigned i = 1; i < count; ++i) points.push_back(At(curve, double{1.0} * i / count));
  points.push_back(curve[3]);
}

}  // namespace rastrel::jobspool
