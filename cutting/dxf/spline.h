#pragma once

#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// A curve in the form of NURBS: degree 1 to `MaximumDegree`, one knot for each control point and
/// degree + 1 more, and a weight above 0 for each control point or none at all.
struct Spline {
  static constexpr int MaximumDegree = 15;

  int degree = 3;
  std::vector<double> knots;
  std::vector<Point> controls;
  std::vector<double> weights{};
};

/// Whether the numbers make a curve: enough control points, as many knots, which do not decrease,
/// and weights as above.
[[nodiscard]] bool IsSound(const Spline& spline);

/// The same curve as cubics: exactly up to degree 3 without weights, else within `tolerance`.
/// REQUIRES: IsSound.
[[nodiscard]] Contour ContourOf(const Spline& spline, double tolerance);

}  // namespace rastrel::cutting
