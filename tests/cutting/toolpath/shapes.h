#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "cutting/job/contour.h"

/// Outlines for the tests of tool paths, all made from numbers that the test names.
namespace rastrel::cutting::test {

inline Contour Polygon(const std::vector<Point>& points) {
  Contour contour{.start = points.front(), .segments = {}, .closed = true};
  for (std::size_t i = 1; i < points.size(); ++i) contour.segments.push_back(LineTo(points[i]));
  return contour;
}

inline Contour Line(Point from, Point to) {
  return {.start = from, .segments = {LineTo(to)}, .closed = false};
}

/// Counterclockwise from its lower left corner.
inline Contour Rectangle(double left, double bottom, double right, double top) {
  return Polygon({{left, bottom}, {right, bottom}, {right, top}, {left, top}});
}

/// Four curves, counterclockwise from the right. At most 0.03 % of the radius beside the circle.
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

/// A star-shaped ring around the center: its radius wanders between `inner` and `outer`, so it
/// never crosses itself.
inline Contour RandomRing(std::mt19937& random, Point center, double inner, double outer,
                          int corners) {
  std::uniform_real_distribution<double> radius(inner, outer);
  std::uniform_real_distribution<double> shift(0.1, 0.9);
  std::vector<Point> points;
  for (int i = 0; i < corners; ++i) {
    const double angle = 2 * std::numbers::pi * (i + shift(random)) / corners;
    const double r = radius(random);
    points.push_back({center.x + r * std::cos(angle), center.y + r * std::sin(angle)});
  }
  return Polygon(points);
}

}  // namespace rastrel::cutting::test
