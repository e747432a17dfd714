#pragma once

#include <vector>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// Whether nothing of the contour lies away from its start.
[[nodiscard]] bool IsPoint(const Contour& contour);

/// Whether the contour is in a form: all but points, which a drill alone needs.
[[nodiscard]] bool IsDrawn(const CutPath& path, const Contour& contour);

/// Those of the job's paths that have a tool, in the order of the enumeration.
[[nodiscard]] std::vector<Operation> ToolOperationsOf(const CutJob& job);

/// Around the page and all paths with a tool, after the transform. `toDevice` moves, mirrors and
/// swaps axes.
[[nodiscard]] Box PageBoxOf(const CutJob& job, const Transform& toDevice);

}  // namespace rastrel::cutting
