#pragma once

#include <cstdint>
#include <vector>

#include "cutting/clean/check.h"

/// A job's contours as straight lines on a grid of nanometres, where the side of a point beside a
/// line is exact.
namespace rastrel::cutting::clean {

/// Of a millimetre.
inline constexpr double GridUnits = 1e6;
/// Coordinates beyond this, in millimetres, are unusable.
inline constexpr double Farthest = 1e6;

/// Within ±10¹² (Farthest on the grid).
struct GridPoint {
  std::int64_t x = 0;
  std::int64_t y = 0;
  auto operator<=>(const GridPoint&) const = default;
};

/// The nearest of the grid. `point` is usable.
[[nodiscard]] GridPoint OnGrid(Point point);
[[nodiscard]] Point Millimeters(GridPoint point);

/// 1 if `c` is left of the way from `a` to `b`, -1 if right, 0 if on its line. Exact.
[[nodiscard]] int SideOf(GridPoint a, GridPoint b, GridPoint c);

/// Finite, and near enough.
[[nodiscard]] bool IsUsable(const Contour& contour);

struct FlatLine {
  GridPoint from;
  GridPoint to;
  double at = 0;      ///< length of the contour before it, millimetres
  double length = 0;  ///< above 0, millimetres
  std::uint32_t contour = 0;
};

struct FlatContour {
  ContourPlace place;
  Operation operation = Operation::Cut;
  bool closed = false;
  std::uint32_t firstLine = 0;
  std::uint32_t lines = 0;  ///< none if it has no length, or is unusable
  double length = 0;        ///< of the lines, millimetres
};

struct FlatJob {
  std::vector<FlatContour> contours;
  std::vector<FlatLine> lines;  ///< by contour, in its order
  double tolerance = 0;         ///< farthest distance of the lines from the curves
};

/// All usable contours of paths with a tool. `tolerance` grows where the lines would be millions.
[[nodiscard]] FlatJob FlatLinesOf(const CutJob& job, double tolerance);

}  // namespace rastrel::cutting::clean
