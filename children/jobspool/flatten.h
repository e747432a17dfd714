#pragma once

#include <array>
#include <vector>

namespace rastrel::jobspool {

struct Point {
  double x = 0;
  double y = 0;
  bool operator==(const Point&) const = default;
};

/// Appends the ends of straight lines that replace a Bézier curve: start, two control points,
/// end. The start is taken to be there already; the last point appended is the end, exactly. No
/// point of the curve lies more than `tolerance` beside its line. REQUIRES: tolerance > 0. A curve
/// gets at most LinesOfCurve lines.
void AppendCurve(std::vector<Point>& points, const std::array<Point, 4>& curve, double tolerance);

inline constexpr unsigned LinesOfCurve = 4096;

}  // namespace rastrel::jobspool
