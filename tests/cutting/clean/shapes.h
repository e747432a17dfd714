#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "cutting/job/cut_job.h"

/// Shapes of the tests of clean paths, in millimetres.
namespace rastrel::cutting::test {

inline Contour Polygon(std::vector<Point> corners, bool closed = true) {
  Contour contour{.start = corners.front(), .segments = {}, .closed = closed};
  for (std::size_t i = 1; i < corners.size(); ++i) contour.segments.push_back(LineTo(corners[i]));
  return contour;
}

inline Contour Line(std::vector<Point> corners) { return Polygon(std::move(corners), false); }

inline Contour Rectangle(double left, double bottom, double width, double height) {
  return Polygon({{left, bottom},
                  {left + width, bottom},
                  {left + width, bottom + height},
                  {left, bottom + height}});
}

/// By four curves, counterclockwise from its right.
inline Contour Circle(Point center, double radius) {
  const double k = 0.5522847498307936 * radius;
  const auto at = [&](double x, double y) { return Point{center.x + x, center.y + y}; };
  return {.start = at(radius, 0),
          .segments = {CurveTo(at(radius, k), at(k, radius), at(0, radius)),
                       CurveTo(at(-k, radius), at(-radius, k), at(-radius, 0)),
                       CurveTo(at(-radius, -k), at(-k, -radius), at(0, -radius)),
                       CurveTo(at(k, -radius), at(radius, -k), at(radius, 0))},
          .closed = true};
}

/// Each curve cut in two at `t`; the line is the same.
inline Contour Split(const Contour& contour, double t) {
  const auto between = [&](Point a, Point b) {
    return Point{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
  };
  Contour split{.start = contour.start, .segments = {}, .closed = contour.closed};
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    if (segment.isCurve) {
      const Point a = between(from, segment.first);
      const Point b = between(segment.first, segment.second);
      const Point c = between(segment.second, segment.end);
      const Point ab = between(a, b);
      const Point bc = between(b, c);
      split.segments.push_back(CurveTo(a, ab, between(ab, bc)));
      split.segments.push_back(CurveTo(bc, c, segment.end));
    } else {
      split.segments.push_back(LineTo(between(from, segment.end)));
      split.segments.push_back(segment);
    }
    from = segment.end;
  }
  return split;
}

/// On a page of 1,000 by 1,000, each contour a path of its own that is stroked.
inline CutJob JobOf(std::vector<Contour> contours, Operation operation = Operation::Cut) {
  CutJob job{.width = 1000, .height = 1000, .paths = {}};
  for (Contour& contour : contours)
    job.paths.push_back({.contours = {std::move(contour)}, .operation = operation});
  return job;
}

}  // namespace rastrel::cutting::test
