#pragma once

// A second evaluation of where frames are, one line for each row of the tables, kept apart from the
// library's: no row is derived from another one.

#include <cmath>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::test {

struct LiteralCorner {
  double left;
  double bottom;
};

/// The first generation's table, for the pane's edges and the frame's offset and size.
inline LiteralCorner LiteralCr2Corner(int code, const CWorldRect& pane, double x, double y,
                                      double w, double h) {
  const double L = pane.left;
  const double R = pane.right;
  const double T = pane.top;
  const double B = pane.bottom;
  if (code == 1) return {L + x, T - y - h};
  if (code == 2) return {x + L - w * 0.5, T - h - y};
  if (code == 3) return {R - w - x, T - h - y};
  if (code == 4) return {L + x, T - y - h * 0.5};
  if (code == 5) return {x + L - w * 0.5, T - y - h * 0.5};
  if (code == 6) return {R - w - x, y + B - h * 0.5};
  if (code == 7) return {L + x, y + B};
  if (code == 8) return {x + L - w * 0.5, y + B};
  if (code == 9) return {R - w - x, y + B};
  return {x, y};
}

/// The first generation's frame.
inline BOUNDS LiteralCr2Frame(const CWorldRect& pane, const CR2_PLACEMENT& p) {
  const LiteralCorner at = LiteralCr2Corner(p.origin, pane, p.x, p.y, p.width, p.height);
  return {.xmin = static_cast<float>(at.left),
          .xmax = static_cast<float>(at.left + p.width),
          .ymin = static_cast<float>(at.bottom),
          .ymax = static_cast<float>(at.bottom + p.height)};
}

/// The first generation's matrix for objects of those bounds, with the bounds under the scale
/// written out corner by corner.
inline TM LiteralCr2Matrix(const CWorldRect& pane, const CR2_PLACEMENT& p, const BOUNDS& objects) {
  const double bw = objects.xmax - objects.xmin;
  const double bh = objects.ymax - objects.ymin;
  double sx = 1.0;
  double sy = 1.0;
  if (bw > 0.0) sx = p.width / bw;
  if (bh > 0.0) sy = p.height / bh;
  if (p.constrained) {
    if (std::fabs(sx) < std::fabs(sy))
      sy = sx;
    else
      sx = sy;
  }
  const double l = std::fmin(sx * objects.xmin, sx * objects.xmax);
  const double r = std::fmax(sx * objects.xmin, sx * objects.xmax);
  const double b = std::fmin(sy * objects.ymin, sy * objects.ymax);
  const double t = std::fmax(sy * objects.ymin, sy * objects.ymax);
  const LiteralCorner at = LiteralCr2Corner(p.origin, pane, p.x, p.y, r - l, t - b);
  return {.a = sx, .b = 0, .c = 0, .d = sy, .tx = at.left - l, .ty = at.bottom - b};
}

/// The second generation's point in a pane.
inline CWorldPoint LiteralZmlPoint(int code, const CWorldRect& pane, const CR2_MARGINS& margins,
                                   double x, double y) {
  const double L = pane.left + margins.left;
  const double T = pane.top - margins.top;
  const double B = pane.bottom + margins.bottom;
  const double W = (pane.right - margins.right) - L;
  const double H = T - B;
  if (code == 1) return {x + L, T - y};
  if (code == 2) return {W * 0.5 + L + x, T - y};
  if (code == 3) return {W + L + x, T - y};
  if (code == 4) return {x + L, H * 0.5 + B + y};
  if (code == 5) return {W * 0.5 + L + x, H * 0.5 + B + y};
  if (code == 6) return {W + L + x, H * 0.5 + B + y};
  if (code == 7) return {x + L, y + B};
  if (code == 8) return {W * 0.5 + L + x, y + B};
  if (code == 9) return {x + (W + L), x + B};
  return {x, y};
}

/// The second generation's frame, whose point is `x`, `y`; `before` are the edges that a code
/// outside the table leaves.
inline BOUNDS LiteralZmlFrame(int code, double x, double y, double w, double h,
                              const BOUNDS& before) {
  double left = before.xmin;
  double bottom = before.ymin;
  if (code == 1) left = x, bottom = y - h;
  if (code == 2) left = x - w * 0.5, bottom = y - h;
  if (code == 3) left = x - w, bottom = y - h;
  if (code == 4) left = x, bottom = y - h * 0.5;
  if (code == 5) left = x - w * 0.5, bottom = y - h * 0.5;
  if (code == 6) left = x - w, bottom = y - h * 0.5;
  if (code == 7) left = x, bottom = y;
  if (code == 8) left = x - w * 0.5, bottom = y;
  if (code == 9) left = x - w, bottom = y;
  return {.xmin = static_cast<float>(left),
          .xmax = static_cast<float>(left + w),
          .ymin = static_cast<float>(bottom),
          .ymax = static_cast<float>(bottom + h)};
}

}  // namespace rastrel::test
