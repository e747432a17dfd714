#pragma once

#include "cutting/toolpath/closing.h"
#include "cutting/toolpath/kerf.h"
#include "cutting/toolpath/weeding.h"

/// The tool's way through a job, from the outlines that it shall cut to the lines that it runs:
///
///     kerf -> weeding -> order -> overcut, bridges, lead-in
///
/// Each step is a function of its own beside this one.
namespace rastrel::cutting {

struct ToolPathOptions {
  Corners corners = Corners::Round;
  double tolerance = 0.02;  ///< of the kerf's offset, millimetres
  WeedingOptions weeding{};
  bool order = true;
  Point start{};  ///< where the tool waits
};

struct ToolPathReport {
  KerfReport kerf{};
  ClosingReport closing{};
  std::size_t lines = 0;    ///< contours with a tool
  double toolLength = 0;    ///< of all of them as they are worked once, millimetres
  double travelBefore = 0;  ///< with the tool up in the order given, millimetres
  double travelAfter = 0;   ///< the same in the job that is returned
};

struct ToolPathResult {
  CutJob job;
  ToolPathReport report;
};

/// Works all steps by each path's settings. In the job that is returned the paths without a tool
/// come first, as they were; then the tool's lines in their order, neighbors of one path together.
/// A path may come several times, each time with some of its contours. Settings that were worked
/// (kerf, overcut, leadIn, bridges, bridgeWidth) are 0, so that a job that is read back is not
/// worked twice. Fails as AddWeeding does. Any thread.
[[nodiscard]] Expected<ToolPathResult> MakeToolPaths(CutJob job, const ToolPathOptions& options);

}  // namespace rastrel::cutting
