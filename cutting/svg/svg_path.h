#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cutting/job/contour.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// The contours of path data, mapped; arcs become cubics. A move that nothing follows is none.
/// Fails with the reason alone at the first place that is no path data.
[[nodiscard]] Expected<std::vector<Contour>> SvgPath(std::string_view data, const Transform& map);

}  // namespace rastrel::cutting
