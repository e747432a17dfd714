#pragma once

#include <string>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// A drawing in millimetres with a group an operation. `toDevice` goes from the page's millimetres
/// to those of a page with y upward; the page's rectangle is moved by it, too, and the drawing
/// shows it and all paths. Curves stay curves. The job's registration marks are a group of their
/// own, filled in black.
[[nodiscard]] std::string SvgText(const CutJob& job, const Transform& toDevice);

}  // namespace rastrel::cutting
