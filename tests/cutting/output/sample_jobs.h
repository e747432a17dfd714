#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting::test {

inline Contour Line(std::vector<Point> points, bool closed = false) {
  Contour contour{.start = points.front(), .segments = {}, .closed = closed};
  for (std::size_t i = 1; i < points.size(); ++i) contour.segments.push_back(LineTo(points[i]));
  return contour;
}

inline Contour Rectangle(double left, double bottom, double right, double top) {
  return Line({{left, bottom}, {right, bottom}, {right, top}, {left, top}}, true);
}

/// Of four curves, from its rightmost point counterclockwise.
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

/// A closed D: a straight back and a bow of two curves.
inline Contour LetterD(Point corner, double height) {
  const auto at = [&](double x, double y) { return Point{corner.x + x, corner.y + y}; };
  const double h = height;
  return {
      .start = at(0, 0),
      .segments = {LineTo(at(h / 3, 0)),
                   CurveTo(at(h * 0.6, 0), at(h * 0.8, h * 0.2), at(h * 0.8, h / 2)),
                   CurveTo(at(h * 0.8, h * 0.8), at(h * 0.6, h), at(h / 3, h)), LineTo(at(0, h))},
      .closed = true};
}

inline CutPath PathOf(Operation operation, std::vector<Contour> contours,
                      ToolSettings settings = {}) {
  return {.contours = std::move(contours), .operation = operation, .settings = std::move(settings)};
}

inline CutJob JobOf(std::vector<CutPath> paths) {
  return {.width = 120, .height = 80, .paths = std::move(paths)};
}

/// A plate with a letter, a hole, a crease, a drill point and a run of each further operation.
inline CutJob Plate() {
  return JobOf({PathOf(Operation::Mark, {Line({{2, 2}, {6, 2}})}),
                PathOf(Operation::Engrave, {LetterD({20, 20}, 30)}),
                PathOf(Operation::Drill, {Line({{110, 70}})}),
                PathOf(Operation::Perforate, {Line({{60, 10}, {60, 70}})}),
                PathOf(Operation::Crease, {Line({{10, 15}, {50, 15}, {50, 12}})}),
                PathOf(Operation::CutHalf, {Circle({90, 40}, 15), Circle({90, 40}, 8)}),
                PathOf(Operation::Print, {Rectangle(0, 0, 120, 80)}),
                PathOf(Operation::Cut, {Rectangle(5, 5, 115, 75)}),
                PathOf(Operation::Ignore, {Rectangle(1, 1, 3, 3)})});
}

}  // namespace rastrel::cutting::test
