#pragma once

#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// A straight line's box.
[[nodiscard]] std::vector<Box> BoxesOfLines(const std::vector<Point>& points, bool closed);

/// Whether so many of the boxes, each grown by `distance`, overlap that lines at that distance from
/// them would cross each other millions of times: an offset takes as many steps. Outlines of things
/// that are cut are far from it; scribbles, and a kerf that is wide against all details, are not.
[[nodiscard]] bool IsTangled(std::vector<Box> boxes, double distance);

}  // namespace rastrel::cutting
