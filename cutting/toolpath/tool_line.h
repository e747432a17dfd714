#pragma once

#include <cstddef>
#include <vector>

#include "cutting/job/cut_job.h"

/// A contour on its way through the room: with the path that it belongs to.
namespace rastrel::cutting {

struct ToolLine {
  Contour contour;
  std::size_t path = 0;  ///< index in the job's paths, whose operation and settings hold
  int depth = 0;         ///< how many closed contours of the operation hold it: odd for a hole
  bool operator==(const ToolLine&) const = default;
};

/// The contours of all paths with a tool, in the job's order. The depth is 0 throughout.
[[nodiscard]] std::vector<ToolLine> ToolLinesOf(const CutJob& job);

/// Sets the depths, by the nesting of the contours of each operation alone.
void FindDepths(const CutJob& job, std::vector<ToolLine>& lines);

}  // namespace rastrel::cutting
