#pragma once

#include <optional>
#include <string_view>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

struct SvgColor {
  PaintColor color;
  double alpha = 1;  ///< 0 is not painted at all
};

/// A color in one of the forms of style sheets: a name, "#f0c", "#ff00cc", rgb(), hsl() and
/// device-cmyk(). Nothing for another text.
[[nodiscard]] std::optional<SvgColor> SvgColorOf(std::string_view text);

}  // namespace rastrel::cutting
