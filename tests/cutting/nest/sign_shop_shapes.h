#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

#include "cutting/job/cut_job.h"

/// Shapes like those of a sign shop's day, the same at each call: plates, letters, discs, badges.
namespace rastrel::test {

inline cutting::CutJob JobOf(cutting::Contour contour) {
  const cutting::Box box = BoxOf(contour);
  return {.width = box.right, .height = box.top, .paths = {{.contours = {std::move(contour)}}}};
}

inline cutting::Contour Polygon(const std::vector<cutting::Point>& points) {
  cutting::Contour contour{.start = points.front(), .segments = {}, .closed = true};
  for (std::size_t i = 1; i < points.size(); ++i)
    contour.segments.push_back(cutting::LineTo(points[i]));
  return contour;
}

inline cutting::Contour Plate(double width, double height) {
  return Polygon({{0, 0}, {width, 0}, {width, height}, {0, height}});
}

inline cutting::Contour Disc(double r) {
  const double k = 0.5522847498307936 * r;
  return {.start = {2 * r, r},
          .segments = {cutting::CurveTo({2 * r, r + k}, {r + k, 2 * r}, {r, 2 * r}),
                       cutting::CurveTo({r - k, 2 * r}, {0, r + k}, {0, r}),
                       cutting::CurveTo({0, r - k}, {r - k, 0}, {r, 0}),
                       cutting::CurveTo({r + k, 0}, {2 * r, r - k}, {2 * r, r})},
          .closed = true};
}

/// An L, T, V or E of the height `h`.
inline cutting::Contour Letter(int which, double h) {
  const double s = h / 4;
  switch (which % 4) {
    case 0: return Polygon({{0, 0}, {2.5 * s, 0}, {2.5 * s, s}, {s, s}, {s, h}, {0, h}});
    case 1:
      return Polygon({{s, 0},
                      {2 * s, 0},
                      {2 * s, 3 * s},
                      {3 * s, 3 * s},
                      {3 * s, h},
                      {0, h},
                      {0, 3 * s},
                      {s, 3 * s}});
    case 2:
      return Polygon(
          {{1.2 * s, 0}, {2 * s, 0}, {3.2 * s, h}, {2.2 * s, h}, {1.6 * s, s}, {s, h}, {0, h}});
    default:
      return Polygon({{0, 0},
                      {2.5 * s, 0},
                      {2.5 * s, s},
                      {s, s},
                      {s, 1.6 * s},
                      {2 * s, 1.6 * s},
                      {2 * s, 2.4 * s},
                      {s, 2.4 * s},
                      {s, 3 * s},
                      {2.5 * s, 3 * s},
                      {2.5 * s, h},
                      {0, h}});
  }
}

/// A shield with a point at its foot.
inline cutting::Contour Badge(double w) {
  return {.start = {w / 2, 0},
          .segments = {cutting::CurveTo({w * 0.8, w * 0.2}, {w, w * 0.4}, {w, w * 0.7}),
                       cutting::LineTo({w, w * 1.2}), cutting::LineTo({0, w * 1.2}),
                       cutting::LineTo({0, w * 0.7}),
                       cutting::CurveTo({0, w * 0.4}, {w * 0.2, w * 0.2}, {w / 2, 0})},
          .closed = true};
}

inline std::vector<cutting::CutJob> SignShopShapes(int count) {
  std::mt19937 random(17);
  const auto between = [&](unsigned low, unsigned high) {
    return static_cast<double>(low + random() % (high - low + 1));
  };
  std::vector<cutting::CutJob> jobs;
  for (int i = 0; i < count; ++i) {
    switch (i % 4) {
      case 0: jobs.push_back(JobOf(Plate(between(60, 240), between(30, 120)))); break;
      case 1: jobs.push_back(JobOf(Letter(i / 4, between(50, 160)))); break;
      case 2: jobs.push_back(JobOf(Disc(between(15, 60)))); break;
      default: jobs.push_back(JobOf(Badge(between(40, 110)))); break;
    }
  }
  return jobs;
}

}  // namespace rastrel::test
