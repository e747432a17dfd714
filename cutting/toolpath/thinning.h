#pragma once

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// The contour with fewer lines: no point of it is more than `distance` away from the old contour,
/// and none of the old one from it. The corners that are left are old ones. Curves, the start and
/// the ends of an open contour stay. In linear time. `distance` is above 0. Any thread.
[[nodiscard]] Contour Thinned(const Contour& contour, double distance);

}  // namespace rastrel::cutting
