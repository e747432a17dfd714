#pragma once

#include <cstdint>
#include <vector>

#include "cutting/clean/line_tree.h"

namespace rastrel::cutting::clean {

/// A part of contour `on` all of which is within the tolerance of contour `of`; between two of them
/// it is farther away. Of a contour with itself, the nearness around a corner does not count.
struct ContactRun {
  std::uint32_t on = 0;
  std::uint32_t of = 0;
  double from = 0;  ///< along `on`, millimetres
  double to = 0;    ///< below `from` if the run goes through the start of a closed contour
  double length = 0;
  /// Standard deviation of the distance between the two, left of `of` positive: near 0 where they
  /// lie on each other or side by side, and a third of the tolerance and more where they touch.
  double spread = 0;
  /// Where they cross there; on the later contour alone. Two crossings by which a line goes to and
  /// fro within the tolerance are none.
  std::vector<Point> crossings{};
};

struct Contacts {
  std::vector<ContactRun> runs;  ///< by `on`, `of` and place
  bool complete = true;          ///< false if the work was ended by its limit
};

/// The runs of contours of one operation. Those in `left` (one value a contour) are passed over.
[[nodiscard]] Contacts FindContacts(const FlatJob& job, const LineTree& tree, double tolerance,
                                    const std::vector<bool>& left);

/// Point of a contour that is so far from its start.
[[nodiscard]] Point PointAlong(const FlatJob& job, const FlatContour& contour, double at);

}  // namespace rastrel::cutting::clean
