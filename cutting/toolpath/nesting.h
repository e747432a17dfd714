#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "cutting/job/contour.h"

/// Which contour lies in which. Any thread.
namespace rastrel::cutting {

struct Nesting {
  static constexpr std::size_t None = static_cast<std::size_t>(-1);
  /// For each contour the innermost closed one that holds it, or None.
  std::vector<std::size_t> parent;
  /// How many closed ones hold it: 0 for an outline, 1 for a hole in it, 2 for an island there.
  std::vector<int> depth;
};

/// Contours may touch and have runs in common; of two that cross, either may be said to hold the
/// other, or neither. Duplicates, also reversed ones and ones with another start, have the same
/// parent. A closed contour without an area, and an open one, holds nothing. One with a coordinate
/// that is not finite or beyond MaximumCoordinate is held by none. Curves count as lines that are
/// at most 0.02 mm beside them. No pointer may be null. Takes n log n steps, n the lines, and
/// memory in proportion to them.
[[nodiscard]] Nesting NestingOf(std::span<const Contour* const> contours);

/// Coordinates beyond this many millimetres (100 m) belong to no sheet: such a contour is left as
/// it is by whatever works with its geometry.
constexpr double MaximumCoordinate = 100'000;

/// Whether all ends and control points are finite and within MaximumCoordinate.
[[nodiscard]] bool IsOnAnySheet(const Contour& contour);

}  // namespace rastrel::cutting
