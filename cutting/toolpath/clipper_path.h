#pragma once

#include <cmath>
#include <polyclipping/clipper.hpp>
#include <vector>

#include "cutting/job/contour.h"

/// Points as the polygon library takes them: whole numbers, 10,000 a millimetre. All coordinates up
/// to MaximumCoordinate (nesting.h) are within its fast range of 30 bits.
namespace rastrel::cutting {

constexpr double ClipperUnits = 10'000;

[[nodiscard]] inline ClipperLib::Path ClipperPathOf(const std::vector<Point>& points) {
  ClipperLib::Path path;
  path.reserve(points.size());
  for (const Point& point : points)
    path.emplace_back(std::llround(point.x * ClipperUnits), std::llround(point.y * ClipperUnits));
  return path;
}

[[nodiscard]] inline Point PointOf(const ClipperLib::IntPoint& point) {
  return {static_cast<double>(point.X) / ClipperUnits, static_cast<double>(point.Y) / ClipperUnits};
}

}  // namespace rastrel::cutting
