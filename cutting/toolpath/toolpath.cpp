#include "cutting/toolpath/toolpath.h"

#include <algorithm>
#include <utility>

#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/order.h"

namespace rastrel::cutting {
namespace {

constexpr double FlatteningTolerance = 0.02;

bool HasLeadIn(const CutJob& job) {
  return std::ranges::any_of(job.paths,
                             [](const CutPath& path) { return path.settings.leadIn > 0; });
}

// All lines of tools, which a way in may not meet.
LineIndex IndexOf(const std::vector<ToolLine>& lines) {
  std::vector<LineIndex::Line> straight;
  for (const ToolLine& line : lines) {
    if (!IsOnAnySheet(line.contour)) continue;
    std::vector<Point> points = Flatten(line.contour, FlatteningTolerance);
    if (line.contour.closed) points.push_back(points.front());
    for (std::size_t i = 1; i < points.size(); ++i) straight.push_back({points[i - 1], points[i]});
  }
  return LineIndex(std::move(straight));
}

void ClearWorked(ToolSettings& settings) {
  settings.kerf = 0;
  settings.overcut = 0;
  settings.leadIn = 0;
  settings.bridges = 0;
  settings.bridgeWidth = 0;
}

// The job again with the contours of the lines, which may come from its paths in any order.
CutJob Assembled(const CutJob& job, const std::vector<ToolLine>& lines, ClosingReport& report) {
  CutJob result{.width = job.width, .height = job.height, .paths = {}, .marks = job.marks};
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) result.paths.push_back(path);
  }
  const LineIndex others = HasLeadIn(job) ? IndexOf(lines) : LineIndex({});
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const CutPath& from = job.paths[lines[i].path];
    if (i == 0 || lines[i].path != lines[i - 1].path) {
      result.paths.push_back({.contours = {},
                              .operation = from.operation,
                              .settings = from.settings,
                              .paint = from.paint,
                              .rule = from.rule});
      ClearWorked(result.paths.back().settings);
    }
    for (Contour& contour : CloseLine(lines[i], from.settings, others, report))
      result.paths.back().contours.push_back(std::move(contour));
  }
  return result;
}

}  // namespace

Expected<ToolPathResult> MakeToolPaths(CutJob job, const ToolPathOptions& options) {
  ToolPathResult result;
  job = OffsetByKerf(std::move(job), options.corners, options.tolerance, result.report.kerf);
  if (result.report.kerf.IsTooMuch())
    return FailureOf(
        "the kerf is worked on one path of 100,000 corners, or on 100 of 10,000; this job has more",
        FailureCode::BadInput);
  const std::size_t cutPaths = job.paths.size();
  Expected<CutJob> weeded = AddWeeding(std::move(job), options.weeding);
  if (!weeded) return weeded.Error();
  job = *std::move(weeded);
  std::vector<ToolLine> lines = ToolLinesOf(job);
  if (HasLeadIn(job)) {
    // A box around all cuts makes no hole of an outline.
    const auto weeding =
        std::ranges::find_if(lines, [&](const ToolLine& line) { return line.path >= cutPaths; });
    std::vector<ToolLine> cuts(lines.begin(), weeding);
    FindDepths(job, cuts);
    std::ranges::copy(cuts, lines.begin());
  }
  result.report.travelBefore = TravelOf(lines, options.start);
  if (options.order) lines = OrderLines(job, std::move(lines), options.start).lines;
  result.job = Assembled(job, lines, result.report.closing);
  lines = ToolLinesOf(result.job);
  result.report.lines = lines.size();
  result.report.travelAfter = TravelOf(lines, options.start);
  for (const ToolLine& line : lines) {
    if (IsOnAnySheet(line.contour)) result.report.toolLength += LengthOf(line.contour);
  }
  return result;
}

}  // namespace rastrel::cutting
