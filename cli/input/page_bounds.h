#pragma once

#include "rastrel/platform/values/rect.h"

namespace rastrel::cli {

/// Bounds of a page, given in points of 1/72 inch, in centimetres. Not rounded.
[[nodiscard]] BOUNDS InCentimetres(const CRect& points);

}  // namespace rastrel::cli
