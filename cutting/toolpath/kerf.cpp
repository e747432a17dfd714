#include "cutting/toolpath/kerf.h"

#include <algorithm>
#include <cmath>

#include "cutting/toolpath/clipper_path.h"
#include "cutting/toolpath/nesting.h"
#include "cutting/toolpath/tangle.h"
#include "cutting/toolpath/thinning.h"
#include "cutting/toolpath/tool_line.h"

namespace rastrel::cutting {
namespace {

constexpr double MiterLimit = 4;
constexpr double LeastTolerance = 0.001;
// Of the offset: a corner becomes some seventy lines at most, however wide the kerf is.
constexpr double ArcTolerance = 0.001;
// Of the tolerance.
constexpr double FlatteningShare = 0.5;
constexpr double ThinningShare = 0.1;

ClipperLib::JoinType JoinOf(Corners corners) {
  switch (corners) {
    case Corners::Square: return ClipperLib::jtSquare;
    case Corners::Pointed: return ClipperLib::jtMiter;
    case Corners::Round: break;
  }
  return ClipperLib::jtRound;
}

// The areas that a ring winds round, as rings that do not cross themselves. Rings that touch
// themselves may stay whole: to part them takes the library the square of the points, and the
// offset is the same.
ClipperLib::Paths AreasOf(const ClipperLib::Path& ring) {
  ClipperLib::Clipper clipper;
  clipper.AddPath(ring, ClipperLib::ptSubject, true);
  ClipperLib::Paths areas;
  clipper.Execute(ClipperLib::ctUnion, areas, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
  return areas;
}

// The contour's lines begin at the corner nearest to `start`, and run as a counterclockwise one
// does if `counterclockwise` is set; a hole that the offset made runs against it.
Contour ContourOf(const ClipperLib::Path& path, Point start, bool counterclockwise) {
  std::vector<Point> points;
  for (const ClipperLib::IntPoint& point : path) points.push_back(PointOf(point));
  if (!counterclockwise) std::ranges::reverse(points);
  const auto nearest = std::ranges::min_element(
      points, {}, [&](const Point& point) { return Distance(point, start); });
  std::rotate(points.begin(), nearest, points.end());
  Contour contour{.start = points.front(), .segments = {}, .closed = true};
  for (std::size_t i = 1; i < points.size(); ++i) contour.segments.push_back(LineTo(points[i]));
  return contour;
}

// `points` are those of the contour.
std::vector<Contour> Offset(const Contour& contour, const std::vector<Point>& points,
                            double distance, Corners corners, double tolerance) {
  // Half of the tolerance is for curves as lines, a quarter for arcs as lines and a tenth for lines
  // that were thinned; the rest is the library's grid.
  const double arcs = std::max(tolerance / 4, std::abs(distance) * ArcTolerance);
  ClipperLib::ClipperOffset offset(MiterLimit, arcs * ClipperUnits);
  offset.AddPaths(AreasOf(ClipperPathOf(points)), JoinOf(corners), ClipperLib::etClosedPolygon);
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

// The corners of the contour's lines if it is to be offset, else none; one that can't be is
// counted.
std::vector<Point> PointsToOffset(const Contour& contour, double half, double tolerance,
                                  KerfReport& report) {
  if (!contour.closed) {
    ++report.open;
    return {};
  }
  if (!IsOnAnySheet(contour)) {
    ++report.offSheet;
    return {};
  }
  std::vector<Point> points =
      Flatten(Thinned(contour, tolerance * ThinningShare), tolerance * FlatteningShare);
  if (IsTangled(BoxesOfLines(points, true), half)) {
    ++report.tangled;
    return {};
  }
  const auto count = static_cast<double>(points.size());
  report.work += count * count;
  if (report.work > KerfReport::MaximumWork) return {};
  return points;
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
    const std::vector<Point> points = PointsToOffset(line.contour, half, used, report);
    if (points.empty()) {
      path.contours.push_back(line.contour);
      continue;
    }
    const bool isHole = line.depth % 2 == 1;
    const std::vector<Contour> moved =
        Offset(line.contour, points, isHole ? -half : half, corners, used);
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
