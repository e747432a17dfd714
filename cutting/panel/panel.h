#pragma once

#include <cstddef>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// Splits a job that is larger than a device into panels.
namespace rastrel::cutting {

struct PanelOptions {
  double width = 0;    ///< of a panel, millimetres; those at the right edge may be narrower
  double height = 0;   ///< of a panel; those at the top edge may be lower
  double overlap = 0;  ///< that two panels beside each other share, below the panel's sides
};

struct Panel {
  std::size_t number = 1;  ///< from 1: left to right, then bottom to top
  std::size_t column = 0;  ///< from 0, from the left
  std::size_t row = 0;     ///< from 0, from the bottom
  Box area{};              ///< on the job's page: the panel's print, its overlaps included
  CutJob job;              ///< its paths, with the area's lower left corner as origin
};

inline constexpr std::size_t MaximumPanels = 10'000;

/// The panels that cover the page, and all paths that reach beyond it. Between two neighbors the
/// paths are parted on the seam, the middle of the overlap: each part of a path is in one panel, a
/// path along a seam in the panel to the right of it or above. Closed contours that cross a seam
/// become open ones; curves stay curves. The paths keep their order. The job's own marks are kept
/// in each panel that shows them wholly. Fails as BadInput for sizes out of their range, and for
/// more panels than the maximum.
[[nodiscard]] Expected<std::vector<Panel>> SplitIntoPanels(const CutJob& job,
                                                           const PanelOptions& options);

}  // namespace rastrel::cutting
