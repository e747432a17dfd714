#include "cli/input/page_bounds.h"

#include <cstdint>

namespace rastrel::cli {

BOUNDS InCentimetres(const CRect& points) {
  const auto centimetres = [](std::int32_t value) { return value * 2.54 / 72.0; };
  return {.xmin = centimetres(points.left),
          .xmax = centimetres(points.right),
          .ymin = centimetres(points.bottom),
          .ymax = centimetres(points.top)};
}

}  // namespace rastrel::cli
