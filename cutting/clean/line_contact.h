#pragma once

#include <optional>

#include "cutting/clean/flat_lines.h"

/// Two lines beside each other or across.
namespace rastrel::cutting::clean {

/// The part of a line within a distance of another line.
struct LineContact {
  double from = 0;  ///< along the line, millimetres
  double to = 0;
  // Of the part that has the other line beside it and not across: its length, and the integrals of
  // the distance and its square. The distance is positive left of the other line.
  double beside = 0;
  double distance = 0;
  double square = 0;
};

/// Of the line's part from `low` to `high`, millimetres along it.
[[nodiscard]] std::optional<LineContact> ContactOf(const FlatLine& line, const FlatLine& other,
                                                   double tolerance, double low, double high);

/// A line with the one before it in its contour; null at the start of an open one.
struct LineInContour {
  const FlatLine* before = nullptr;
  const FlatLine* line = nullptr;
};

/// Whether the contours cross at a point that belongs to both lines. Each line has its start and
/// not its end, so that a crossing in a corner is found once. A place where they touch, or begin
/// to run along each other, is none.
[[nodiscard]] std::optional<Point> CrossingOf(const LineInContour& first,
                                              const LineInContour& second);

}  // namespace rastrel::cutting::clean
