#include "rastrel/imports/cr2/line_style.h"

#include <bit>
#include <limits>

namespace rastrel::imports {
namespace {

constexpr double LargestHairline = std::bit_cast<double>(0x0040000000000000ULL);

}  // namespace

bool IsNoLine(double stroke) { return stroke < std::numeric_limits<double>::min(); }

void SetStroke(LINESTYLE& style, double stroke) {
  const std::uint32_t others = style.style & ~std::uint32_t{LINESTYLE_KIND};
  if (stroke > LargestHairline)
    style = {.width = stroke, .style = others | LINESTYLE_WIDTH};
  else if (IsNoLine(stroke))
    style = {.width = 0.0, .style = others | LINESTYLE_NONE};
  else
    style = {.width = LineStyleHairline, .style = others | LINESTYLE_HAIRLINE};
}

}  // namespace rastrel::imports
