#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// Calls `take` with each point of the contour from its start to its last end, curves as straight
/// lines within the tolerance. A closed contour's way back to its start is the caller's. Long
/// contours of lines need no memory for it. Of a curve with a control point that is no number, one
/// of the points is none either.
template <typename Take>
void ForEachFlatPoint(const Contour& contour, double tolerance, Take take) {
  take(contour.start);
  Point from = contour.start;
  Contour curve{.start = {}, .segments = {Segment{}}, .closed = false};
  for (const Segment& segment : contour.segments) {
    if (segment.isCurve) {
      if (!std::isfinite(segment.first.x + segment.first.y + segment.second.x + segment.second.y))
        take(Point{std::numeric_limits<double>::quiet_NaN(), 0});
      curve.start = from;
      curve.segments.front() = segment;
      const std::vector<Point> points = Flatten(curve, tolerance);
      for (std::size_t i = 1; i < points.size(); ++i) take(points[i]);
    } else {
      take(segment.end);
    }
    from = segment.end;
  }
}

}  // namespace rastrel::cutting
