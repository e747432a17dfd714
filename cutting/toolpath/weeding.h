#pragma once

#include <optional>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

struct WeedingOptions {
  std::optional<double> boxGap{};  ///< a box so far around all cuts, millimetres; none: no box
  std::optional<double> step{};    ///< between lines, across and upright; none: no lines
  double clearance = 1;            ///< how far lines and box stay from every tool's path
};

/// Lines that cut the waste into pieces that are easily taken off, as a path at the job's end:
/// CutHalf if the job has such a path, else Cut, with the first one's tool, speed, force and order.
/// They run where no piece is: not within a closed cut, but within its holes, and never nearer to a
/// path with a tool than the clearance. Nothing is added beyond the page, if it has a size. A job
/// without cuts is returned as it is. Without a box, lines reach as far around the cuts as the
/// clearance.
///
/// Fails if a step or gap is not finite, the step is not above 0, a gap is below 0, or there would
/// be more than MaximumWeedLines lines, or millions of pieces of them, or if the paths cross each
/// other too often (tangle.h). Any thread.
[[nodiscard]] Expected<CutJob> AddWeeding(CutJob job, const WeedingOptions& options);

constexpr int MaximumWeedLines = 10'000;

}  // namespace rastrel::cutting
