#pragma once

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// The first map, then the second.
[[nodiscard]] Transform Then(const Transform& first, const Transform& second);

/// A direction without the map's move.
[[nodiscard]] Point Turned(const Transform& map, Point direction);

}  // namespace rastrel::cutting
