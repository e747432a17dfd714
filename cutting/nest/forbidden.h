#pragma once

#include <polyclipping/clipper.hpp>

#include "cutting/nest/piece_shape.h"

namespace rastrel::cutting::nest {

/// Where the reference point of `moving` may not be, strictly inside, while that of `standing` is
/// at the origin. Counterclockwise contours that may overlap.
[[nodiscard]] ClipperLib::Paths Forbidden(const TurnedShape& standing, const TurnedShape& moving);

}  // namespace rastrel::cutting::nest
