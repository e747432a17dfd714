#include "cutting/clean/flat_lines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace rastrel::cutting::clean {
namespace {

__extension__ using Wide = __int128;

constexpr std::size_t MaximumLines = 4'000'000;
constexpr std::size_t SpareLines = 200'000;
constexpr std::size_t LinesOfASegment = 256;

bool IsUsablePoint(Point point) {
  return std::abs(point.x) <= Farthest && std::abs(point.y) <= Farthest;
}

template <typename Visit>
void ForEachContour(const CutJob& job, const Visit& visit) {
  for (std::size_t path = 0; path < job.paths.size(); ++path) {
    if (!HasTool(job.paths[path].operation)) continue;
    for (std::size_t contour = 0; contour < job.paths[path].contours.size(); ++contour)
      visit(ContourPlace{path, contour}, job.paths[path].contours[contour]);
  }
}

std::size_t LineLimit(const CutJob& job) {
  std::size_t segments = 0;
  ForEachContour(
      job, [&](ContourPlace, const Contour& contour) { segments += contour.segments.size() + 1; });
  return std::max(segments, std::min(MaximumLines, segments * LinesOfASegment + SpareLines));
}

void AddLine(FlatJob& flat, FlatContour& contour, Point from, Point to) {
  FlatLine line{.from = OnGrid(from), .to = OnGrid(to)};
  if (line.from == line.to) return;
  line.at = contour.length;
  line.length = Distance(Millimeters(line.from), Millimeters(line.to));
  line.contour = static_cast<std::uint32_t>(flat.contours.size());
  contour.length += line.length;
  ++contour.lines;
  flat.lines.push_back(line);
}

void AddContour(FlatJob& flat, ContourPlace place, Operation operation, const Contour& contour) {
  FlatContour added{.place = place,
                    .operation = operation,
                    .closed = contour.closed,
                    .firstLine = static_cast<std::uint32_t>(flat.lines.size())};
  if (IsUsable(contour)) {
    const std::vector<Point> points = Flatten(contour, flat.tolerance);
    // Points that fall together on the grid are passed over.
    std::size_t last = 0;
    for (std::size_t i = 1; i < points.size(); ++i) {
      if (OnGrid(points[i]) == OnGrid(points[last])) continue;
      AddLine(flat, added, points[last], points[i]);
      last = i;
    }
    if (contour.closed) AddLine(flat, added, points[last], points.front());
  }
  flat.contours.push_back(added);
}

}  // namespace

GridPoint OnGrid(Point point) {
  return {std::llround(point.x * GridUnits), std::llround(point.y * GridUnits)};
}

Point Millimeters(GridPoint point) {
  return {static_cast<double>(point.x) / GridUnits, static_cast<double>(point.y) / GridUnits};
}

int SideOf(GridPoint a, GridPoint b, GridPoint c) {
  const std::int64_t ux = b.x - a.x;
  const std::int64_t uy = b.y - a.y;
  const std::int64_t vx = c.x - a.x;
  const std::int64_t vy = c.y - a.y;
  const double left = static_cast<double>(ux) * static_cast<double>(vy);
  const double right = static_cast<double>(uy) * static_cast<double>(vx);
  const double doubt = (std::abs(left) + std::abs(right)) * 1e-15;
  if (left - right > doubt) return 1;
  if (right - left > doubt) return -1;
  const Wide exact = static_cast<Wide>(ux) * vy - static_cast<Wide>(uy) * vx;
  return exact > 0 ? 1 : exact < 0 ? -1 : 0;
}

bool IsUsable(const Contour& contour) {
  return IsUsablePoint(contour.start) &&
         std::ranges::all_of(contour.segments, [](const Segment& segment) {
           return IsUsablePoint(segment.end) &&
                  (!segment.isCurve ||
                   (IsUsablePoint(segment.first) && IsUsablePoint(segment.second)));
         });
}

FlatJob FlatLinesOf(const CutJob& job, double tolerance) {
  const std::size_t limit = LineLimit(job);
  const std::size_t reserved = std::min(limit, MaximumLines) / 64;
  for (double coarse = tolerance;; coarse *= 4) {
    FlatJob flat{.contours = {}, .lines = {}, .tolerance = coarse};
    flat.lines.reserve(reserved);
    bool fits = true;
    ForEachContour(job, [&](ContourPlace place, const Contour& contour) {
      if (fits) AddContour(flat, place, job.paths[place.path].operation, contour);
      fits = fits && flat.lines.size() <= limit;
    });
    if (fits) return flat;
  }
}

}  // namespace rastrel::cutting::clean
