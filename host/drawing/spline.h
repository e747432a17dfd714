#pragma once

#include <vector>

#include "host/drawing/path_builder.h"

namespace rastrel::drawing {

/// A B-spline curve in a drawing's coordinates.
struct Spline {
  int degree = 3;
  std::vector<double> knots;
  std::vector<CWorldPoint> points;  ///< of its control polygon
  std::vector<double> weights;      ///< one for each point, or none: all are 1
};

/// Adds the curve to a path: one of degree 1 to 3 without weights exactly, any other by curves
/// within `tolerance` of it. False for one that is none: too few points or knots, a degree outside
/// 1 to 15, or knots that fall.
bool AddSpline(const Spline& spline, double tolerance, PathBuilder& path);

}  // namespace rastrel::drawing
