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
constexpr std::size_t UsualLinesOfASegment = 4;

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

std::size_t SegmentsOf(const CutJob& job) {
  std::size_t segments = 0;
  ForEachContour(
      job, [&](ContourPlace, const Contour& contour) { segments += contour.segments.size() + 1; });
  return segments;
}

void AddLine(FlatJob& flat, FlatContour& contour, GridPoint from, GridPoint to) {
  if (from == to) return;
  const auto x = static_cast<double>(to.x - from.x);
  const auto y = static_cast<double>(to.y - from.y);
  // At most 8·10²⁴ under the root: nothing to be careful of.
  const double length = std::sqrt(x * x + y * y) / GridUnits;
  flat.lines.push_back({.from = from,
                        .to = to,
                        .at = contour.length,
                        .length = length,
                        .contour = static_cast<std::uint32_t>(flat.contours.size())});
  contour.length += length;
  ++contour.lines;
}

void AddContour(FlatJob& flat, ContourPlace place, Operation operation, const Contour& contour) {
  FlatContour added{.place = place,
                    .operation = operation,
                    .closed = contour.closed,
                    .firstLine = static_cast<std::uint32_t>(flat.lines.size())};
  if (IsUsable(contour)) {
    const std::vector<Point> points = Flatten(contour, flat.tolerance);
    // Points that fall together on the grid are passed over.
    const GridPoint first = OnGrid(points.front());
    GridPoint last = first;
    for (std::size_t i = 1; i < points.size(); ++i) {
      const GridPoint point = OnGrid(points[i]);
      AddLine(flat, added, last, point);
      last = point;
    }
    if (contour.closed) AddLine(flat, added, last, first);
  }
  flat.contours.push_back(added);
}

}  // namespace

GridPoint OnGrid(Point point) {
  // A conversion to whole numbers is one instruction, which the library's rounding is not.
  const auto rounded = [](double value) {
    return static_cast<std::int64_t>(value + (value < 0 ? -0.5 : 0.5));
  };
  return {rounded(point.x * GridUnits), rounded(point.y * GridUnits)};
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
  const std::size_t segments = SegmentsOf(job);
  const std::size_t limit =
      std::max(segments, std::min(MaximumLines, segments * LinesOfASegment + SpareLines));
  for (double coarse = tolerance;; coarse *= 4) {
    FlatJob flat{.contours = {}, .lines = {}, .tolerance = coarse};
    flat.lines.reserve(std::min(limit, segments * UsualLinesOfASegment));
    bool fits = true;
    ForEachContour(job, [&](ContourPlace place, const Contour& contour) {
      if (fits) AddContour(flat, place, job.paths[place.path].operation, contour);
      fits = fits && flat.lines.size() <= limit;
    });
    if (fits) return flat;
  }
}

}  // namespace rastrel::cutting::clean
