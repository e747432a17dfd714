#include "rastrel/platform/values/tm.h"

#include <algorithm>

namespace {

/// A source line of no length has no scale; the factor 1 keeps the matrix invertible.
double ScaleBetween(double sourceLength, double targetLength) {
  return sourceLength > 0 ? targetLength / sourceLength : 1.0;
}

}  // namespace

BOUNDS DBTranslateBounds(const BOUNDS& bounds, const TM& matrix) {
  // Each term is smallest at one end of its own side, so the corners need not be tried one by one.
  const auto [xFromXLow, xFromXHigh] =
      std::minmax({matrix.a * bounds.xmin, matrix.a * bounds.xmax});
  const auto [xFromYLow, xFromYHigh] =
      std::minmax({matrix.c * bounds.ymin, matrix.c * bounds.ymax});
  const auto [yFromXLow, yFromXHigh] =
      std::minmax({matrix.b * bounds.xmin, matrix.b * bounds.xmax});
  const auto [yFromYLow, yFromYHigh] =
      std::minmax({matrix.d * bounds.ymin, matrix.d * bounds.ymax});
  return {.xmin = xFromXLow + xFromYLow + matrix.tx,
          .xmax = xFromXHigh + xFromYHigh + matrix.tx,
          .ymin = yFromXLow + yFromYLow + matrix.ty,
          .ymax = yFromXHigh + yFromYHigh + matrix.ty};
}

void GetTmFromBounds(const BOUNDS& source, const BOUNDS& target, TM& matrix) {
  const double scaleX = ScaleBetween(source.xmax - source.xmin, target.xmax - target.xmin);
  const double scaleY = ScaleBetween(source.ymax - source.ymin, target.ymax - target.ymin);
  matrix = {.a = scaleX,
            .b = 0,
            .c = 0,
            .d = scaleY,
            .tx = target.xmin - scaleX * source.xmin,
            .ty = target.ymin - scaleY * source.ymin};
}
