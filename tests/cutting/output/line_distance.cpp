#include "tests/cutting/output/line_distance.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rastrel::cutting::test {
namespace {

struct Stroke {
  Point from;
  Point to;
};

std::vector<Stroke> StrokesOf(const std::vector<Contour>& contours) {
  std::vector<Stroke> strokes;
  for (const Contour& contour : contours) {
    const std::vector<Point> points = Flatten(contour, 0.0001);
    for (std::size_t i = 1; i < points.size(); ++i) strokes.push_back({points[i - 1], points[i]});
    if (contour.closed || points.size() == 1) strokes.push_back({points.back(), points.front()});
  }
  return strokes;
}

double DistanceTo(const Stroke& stroke, Point point) {
  const double dx = stroke.to.x - stroke.from.x;
  const double dy = stroke.to.y - stroke.from.y;
  const double square = dx * dx + dy * dy;
  double t = 0;
  if (square > 0)
    t = std::clamp(((point.x - stroke.from.x) * dx + (point.y - stroke.from.y) * dy) / square, 0.0,
                   1.0);
  return std::hypot(stroke.from.x + t * dx - point.x, stroke.from.y + t * dy - point.y);
}

double OneWay(const std::vector<Stroke>& from, const std::vector<Stroke>& to) {
  double farthest = 0;
  for (const Stroke& stroke : from) {
    const int steps =
        1 +
        static_cast<int>(std::hypot(stroke.to.x - stroke.from.x, stroke.to.y - stroke.from.y) * 10);
    for (int i = 0; i <= steps; ++i) {
      const double t = static_cast<double>(i) / steps;
      const Point place{stroke.from.x + (stroke.to.x - stroke.from.x) * t,
                        stroke.from.y + (stroke.to.y - stroke.from.y) * t};
      double nearest = std::numeric_limits<double>::infinity();
      for (const Stroke& other : to) nearest = std::min(nearest, DistanceTo(other, place));
      farthest = std::max(farthest, nearest);
    }
  }
  return farthest;
}

}  // namespace

std::vector<Contour> ToolContours(const CutJob& job) {
  std::vector<Contour> contours;
  for (const CutPath& path : job.paths) {
    if (HasTool(path.operation))
      contours.insert(contours.end(), path.contours.begin(), path.contours.end());
  }
  return contours;
}

double Distance(const std::vector<Contour>& a, const std::vector<Contour>& b) {
  const std::vector<Stroke> first = StrokesOf(a);
  const std::vector<Stroke> second = StrokesOf(b);
  return std::max(OneWay(first, second), OneWay(second, first));
}

}  // namespace rastrel::cutting::test
