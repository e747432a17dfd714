#pragma once

#include <vector>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting::test {

/// All contours with a tool.
[[nodiscard]] std::vector<Contour> ToolContours(const CutJob& job);

/// How far a place of either lies from the nearest of the other: Hausdorff's distance, of places
/// every tenth of a millimetre.
[[nodiscard]] double Distance(const std::vector<Contour>& a, const std::vector<Contour>& b);

}  // namespace rastrel::cutting::test
