#pragma once

#include <vector>

#include "cutting/job/contour.h"

/// Arcs of circles in place of a cubic curve, for machines that know them.
namespace rastrel::cutting {

/// A part of a curve that begins where the one before it ends.
struct FittedPart {
  Point end;
  bool isArc = false;   ///< else it is a straight line
  bool isLeft = false;  ///< the arc runs counterclockwise; it is less than a half circle
  Point center{};
};

/// An arc from one place to another through a third that is between them. A straight line if the
/// circle would be larger than a machine's numbers are good for.
[[nodiscard]] FittedPart ArcThrough(Point from, Point between, Point to);

/// The parts of a curve, each at most `tolerance` beside it, and the last to its very end. A curve
/// whose numbers are not finite is one line.
[[nodiscard]] std::vector<FittedPart> ArcsOf(Point from, const Segment& curve, double tolerance);

}  // namespace rastrel::cutting
