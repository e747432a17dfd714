#include "rastrel/imports/cr2/frame_position.h"

#include <cmath>

namespace rastrel::imports {
namespace {

double Rounded(double value) { return static_cast<double>(static_cast<float>(value)); }

double FrameLeft(const CWorldRect& pane, const CR2_PLACEMENT& placement) {
  switch (placement.origin) {
    case 1:
    case 4:
    case 7: return pane.left + placement.x;
    case 2:
    case 5:
    case 8: return placement.x + pane.left - placement.width * 0.5;
    case 3:
    case 6:
    case 9: return pane.right - placement.width - placement.x;
    default: return placement.x;
  }
}

// The order of the terms differs from row to row, and results are compared to the last bit.
double FrameBottom(const CWorldRect& pane, const CR2_PLACEMENT& placement) {
  switch (placement.origin) {
    case 1: return pane.top - placement.y - placement.height;
    case 2:
    case 3: return pane.top - placement.height - placement.y;
    case 4:
    case 5: return pane.top - placement.y - placement.height * 0.5;
    case 6: return placement.y + pane.bottom - placement.height * 0.5;
    case 7:
    case 8:
    case 9: return placement.y + pane.bottom;
    default: return placement.y;
  }
}

TM ScaleToPlacement(const CR2_PLACEMENT& placement, const BOUNDS& objects) {
  const double width = objects.xmax - objects.xmin;
  const double height = objects.ymax - objects.ymin;
  TM matrix;
  matrix.a = width > 0.0 ? placement.width / width : 1.0;
  matrix.d = height > 0.0 ? placement.height / height : 1.0;
  if (!placement.constrained) return matrix;
  if (std::abs(matrix.a) >= std::abs(matrix.d))
    matrix.a = matrix.d;
  else
    matrix.d = matrix.a;
  return matrix;
}

}  // namespace

CR2_PLACEMENT EffectivePlacement(const CR2_PLACEMENT& placement,
                                 const CR2_MARGINS& templateMargins) {
  CR2_PLACEMENT effective = placement;
  effective.x = (placement.x + templateMargins.left) * host::CentimetresPerInch;
  effective.y = (placement.y + templateMargins.top) * host::CentimetresPerInch;
  effective.width = placement.width * host::CentimetresPerInch;
  effective.height = placement.height * host::CentimetresPerInch;
  return effective;
}

CWorldPoint FrameCorner(const CWorldRect& pane, const CR2_PLACEMENT& placement) {
  return {.x = FrameLeft(pane, placement), .y = FrameBottom(pane, placement)};
}

BOUNDS GetFramePosition(const CWorldRect& pane, const CR2_PLACEMENT& placement) {
  const CWorldPoint corner = FrameCorner(pane, placement);
  return {.xmin = Rounded(corner.x),
          .xmax = Rounded(corner.x + placement.width),
          .ymin = Rounded(corner.y),
          .ymax = Rounded(corner.y + placement.height)};
}

TM CreateTmForPlacement(const CWorldRect& pane, const CR2_PLACEMENT& placement,
                        const BOUNDS& objects) {
  TM matrix = ScaleToPlacement(placement, objects);
  const BOUNDS scaled = DBTranslateBounds(objects, matrix);
  CR2_PLACEMENT sized = placement;
  sized.width = scaled.xmax - scaled.xmin;
  sized.height = scaled.ymax - scaled.ymin;
  const CWorldPoint corner = FrameCorner(pane, sized);
  matrix.tx = corner.x - scaled.xmin;
  matrix.ty = corner.y - scaled.ymin;
  return matrix;
}

}  // namespace rastrel::imports
