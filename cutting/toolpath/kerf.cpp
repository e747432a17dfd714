#include "cutting/toolpath/kerf.h"

#include <algorithm>
#include <cmath>

#include "cutting/toolpath/clipper_path.h"
#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/tangle.h"
#include "cutting/toolpath/tool_line.h"

namespace rastrel::cutting {
namespace {

constexpr double MiterLimit = 4;
constexpr double LeastTolerance = 0.001;
// Of the offset: a corner becomes some seventy lines at most, however wide the kerf is.
constexpr double ArcTolerance = 0.001;

ClipperLib::JoinType JoinOf(Corners corners) {
  switch (corners) {
    case Corners::Square: return ClipperLib::jtSquare;
    case Corners::Pointed: return ClipperLib::jtMiter;
    case Corners::Round: break;
  }
  return ClipperLib::jtRound;
}

// The contour's lines begin at the corner nearest to `start`, and run as a counterclockwise one
// does if `counterclockwise` is set; a hole that the offset made runs against it.
Contour ContourOf(const ClipperLib::Path& path, Point start, bool counterclockwise) {
  std::vector<Point> points;
  for (const ClipperLib::IntPoint& point : path) points.push_back(PointOf(point));
  if (!counterclockwise) std::ranges::reverse(points);
  const auto nearest = std::ranges::min_element(
      points, {}, [&](const Point& point) { return Distance(point, start); });
  std::ranges::rotate(points, nearest);
  Contour contour{.start = points.front(), .segments = {}, .closed = true};
  for (std::size_t i = 1; i < points.size(); ++i) contour.segments.push_back(LineTo(points[i]));
  return contour;
}

std::vector<Contour> Offset(const Contour& contour, double distance, Corners corners,
                            double tolerance) {
  // Half of the tolerance is for curves as lines, and a quarter for arcs as lines; the rest is the
  // library's grid.
  ClipperLib::Paths outlines;
  ClipperLib::SimplifyPolygon(ClipperPathOf(Flatten(contour, tolerance / 2)), outlines,
                              ClipperLib::pftNonZero);
  const double arcs = std::max(tolerance / 4, std::abs(distance) * ArcTolerance);
  ClipperLib::ClipperOffset offset(MiterLimit, arcs * ClipperUnits);
  offset.AddPaths(outlines, JoinOf(corners), ClipperLib::etClosedPolygon);
  ClipperLib::Paths moved;
  offset.Execute(moved, distance * ClipperUnits);
  std::vector<Contour> result;
  const bool counterclockwise = AreaOf(contour) >= 0;
  for (const ClipperLib::Path& path : moved) {
    if (path.size() >= 3) result.push_back(ContourOf(path, contour.start, counterclockwise));
  }
  return result;
}

KerfReport::Place PlaceOf(const Contour& contour, std::size_t path, std::size_t index) {
  const Box box = BoxOf(contour);
  return {path,
          index,
          {(box.left + box.right) / 2, (box.bottom + box.top) / 2},
          std::abs(AreaOf(contour))};
}

// Whether the contour is to be offset; one that can't be is counted.
bool CanOffset(const Contour& contour, double half, double tolerance, KerfReport& report) {
  if (!contour.closed) {
    ++report.open;
    return false;
  }
  if (!IsOnAnySheet(contour)) {
    ++report.offSheet;
    return false;
  }
  if (IsTangled(BoxesOfLines(Flatten(contour, tolerance / 2), true), half)) {
    ++report.tangled;
    return false;
  }
  return true;
}

}  // namespace

CutJob OffsetByKerf(CutJob job, Corners corners, double tolerance, KerfReport& report) {
  const bool hasKerf = std::ranges::any_of(job.paths, [](const CutPath& path) {
    return HasTool(path.operation) && path.settings.kerf > 0;
  });
  if (!hasKerf) return job;
  std::vector<ToolLine> lines = ToolLinesOf(job);
  FindDepths(job, lines);
  for (CutPath& path : job.paths) {
    if (HasTool(path.operation) && path.settings.kerf > 0) path.contours.clear();
  }
  std::size_t inPath = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const ToolLine& line = lines[i];
    inPath = i > 0 && lines[i - 1].path == line.path ? inPath + 1 : 0;
    CutPath& path = job.paths[line.path];
    if (!(path.settings.kerf > 0)) continue;
    const double half = std::min(path.settings.kerf, MaximumCoordinate) / 2;
    const double used = std::max(tolerance, LeastTolerance);
    if (!CanOffset(line.contour, half, used, report)) {
      path.contours.push_back(line.contour);
      continue;
    }
    const bool isHole = line.depth % 2 == 1;
    const std::vector<Contour> moved = Offset(line.contour, isHole ? -half : half, corners, used);
    if (moved.empty()) {
      report.vanished.push_back(PlaceOf(line.contour, line.path, inPath));
    } else {
      ++report.moved;
    }
    path.contours.insert(path.contours.end(), moved.begin(), moved.end());
  }
  for (CutPath& path : job.paths) {
    if (HasTool(path.operation)) path.settings.kerf = 0;
  }
  return job;
}

}  // namespace rastrel::cutting
