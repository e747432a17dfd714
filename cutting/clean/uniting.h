#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "cutting/clean/flat_lines.h"

namespace rastrel::cutting::clean {

/// A closed contour with the number of its path; contours of one path enclose one area together.
struct AreaContour {
  const Contour* contour = nullptr;  ///< closed and usable
  std::size_t path = 0;
  Paint::Kind kind = Paint::Kind::Stroke;  ///< says how the path's contours enclose it; of strokes
                                           ///< one within another is a hole
};

struct United {
  /// For each contour that was given, whether it is an outline of the union as it is.
  std::vector<bool> kept;
  /// The other outlines: outer ones run counterclockwise, holes clockwise. Whole curves of the
  /// contours that were given are curves, and their corners are the same to the bit; elsewhere the
  /// lines lie within `tolerance` of the curves.
  std::vector<Contour> added;
};

/// The outlines of the area that all paths enclose together. None if the work can't be done.
[[nodiscard]] std::optional<United> Unite(const std::vector<AreaContour>& contours,
                                          double tolerance);

/// The area, in square millimetres, that two contours have in common.
[[nodiscard]] double CommonArea(const Contour& first, const Contour& second, double tolerance);

}  // namespace rastrel::cutting::clean
