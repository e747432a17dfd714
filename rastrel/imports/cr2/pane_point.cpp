#include "rastrel/imports/cr2/pane_point.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rastrel::imports {
namespace {

float Single(double value) { return static_cast<float>(value); }

/// A share of a length before a point; a share of 0 leaves the point as it is, whatever the length.
double LessShare(double point, double length, double share) {
  return share == 0.0 ? point : point - length * share;
}

/// The factor from a length of objects to a wanted one; 1 where the objects have no length, as
/// GetTmFromBounds does not scale them then.
double FactorTo(double wanted, double length) { return length > 0 ? wanted / length : 1.0; }

/// The same as a limit on both sides: none where the objects have no length.
float LimitOf(double wanted, double length) {
  return length > 0 ? Single(wanted / length) : std::numeric_limits<float>::infinity();
}

void SizeBySides(CR2_PLACEMENT& sized, double width, double height) {
  const bool hasWidth = Single(sized.width) > 0.0F;
  const bool hasHeight = Single(sized.height) > 0.0F;
  if (hasWidth && hasHeight) return;
  const CR2_PLACEMENT given = sized;
  if (hasHeight)
    sized.width = width * FactorTo(given.height, height);
  else if (hasWidth)
    sized.height = height * FactorTo(given.width, width);
  if (hasWidth || hasHeight) return;
  sized.width = width;
  sized.height = height;
}

}  // namespace

CWorldRect GetPaneBoundsInsideMargins(const CWorldRect& pane, const CR2_MARGINS& margins) {
  return {.left = pane.left + margins.left,
          .top = pane.top - margins.top,
          .right = pane.right - margins.right,
          .bottom = pane.bottom + margins.bottom};
}

CWorldPoint GetPointInPane(const CWorldRect& pane, const CR2_TEMPLATE& plate,
                           const CWorldPoint& point) {
  const CWorldRect inner = GetPaneBoundsInsideMargins(pane, plate.margins);
  const double width = inner.right - inner.left;
  const double height = inner.top - inner.bottom;
  const double fromCenter = width * 0.5 + inner.left + point.x;
  const double fromRight = width + inner.left + point.x;
  const double fromMiddle = height * 0.5 + inner.bottom + point.y;
  switch (plate.placement.origin) {
    case 1: return {.x = point.x + inner.left, .y = inner.top - point.y};
    case 2: return {.x = fromCenter, .y = inner.top - point.y};
    case 3: return {.x = fromRight, .y = inner.top - point.y};
    case 4: return {.x = point.x + inner.left, .y = fromMiddle};
    case 5: return {.x = fromCenter, .y = fromMiddle};
    case 6: return {.x = fromRight, .y = fromMiddle};
    case 7: return {.x = point.x + inner.left, .y = point.y + inner.bottom};
    case 8: return {.x = fromCenter, .y = point.y + inner.bottom};
    // Both from x: templates of this origin are drawn for it.
    case 9: return {.x = point.x + (width + inner.left), .y = point.x + inner.bottom};
    default: return point;
  }
}

void GetFramePosition(const CR2_PLACEMENT& placement, BOUNDS& frame) {
  if (placement.origin >= 1 && placement.origin <= 9) {
    // Columns and rows of the nine origins: how much of the frame is left of, and below the point.
    constexpr double Before[] = {0.0, 0.5, 1.0};
    constexpr double Below[] = {1.0, 0.5, 0.0};
    frame.xmin = LessShare(placement.x, placement.width, Before[(placement.origin - 1) % 3]);
    frame.ymin = LessShare(placement.y, placement.height, Below[(placement.origin - 1) / 3]);
  }
  const double left = frame.xmin;
  const double bottom = frame.ymin;
  frame = {.xmin = static_cast<double>(Single(left)),
           .xmax = static_cast<double>(Single(left + placement.width)),
           .ymin = static_cast<double>(Single(bottom)),
           .ymax = static_cast<double>(Single(bottom + placement.height))};
}

CR2_PLACEMENT SizedToObjects(const CR2_PLACEMENT& placement, const BOUNDS& objects) {
  const double width = objects.xmax - objects.xmin;
  const double height = objects.ymax - objects.ymin;
  CR2_PLACEMENT sized = placement;
  SizeBySides(sized, width, height);
  if (!placement.constrained) return sized;
  const float factor = std::min(LimitOf(sized.width, width), LimitOf(sized.height, height));
  if (std::isinf(factor)) return sized;
  sized.width = width * static_cast<double>(factor);
  sized.height = height * static_cast<double>(factor);
  return sized;
}

}  // namespace rastrel::imports
