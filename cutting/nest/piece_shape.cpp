#include "cutting/nest/piece_shape.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rastrel::cutting::nest {
namespace {

using ClipperLib::cInt;
using ClipperLib::IntPoint;
using ClipperLib::Path;
using ClipperLib::Paths;

constexpr double FlatTolerance = 0.05;  // millimetres
constexpr double Reserve = 0.005;       // millimetres; for all roundings to a micrometre
// The time of a layout grows with the square of an outline's corners.
constexpr std::size_t EnoughCorners = 48;
constexpr std::size_t MaximumCorners = 200;

Path Rounded(const std::vector<Point>& points) {
  Path path;
  path.reserve(points.size());
  for (const Point& point : points)
    path.emplace_back(std::llround(point.x * UnitsPerMillimetre),
                      std::llround(point.y * UnitsPerMillimetre));
  return path;
}

// Never without an area, which the box of one straight line lacks.
Path Rectangle(const Box& box) {
  const double x = box.Width() < Reserve ? Reserve : 0;
  const double y = box.Height() < Reserve ? Reserve : 0;
  return Rounded({{box.left - x, box.bottom - y},
                  {box.right + x, box.bottom - y},
                  {box.right + x, box.top + y},
                  {box.left - x, box.top + y}});
}

Paths Outer(const Paths& paths) {
  Paths outer;
  for (const Path& path : paths)
    if (ClipperLib::Orientation(path)) outer.push_back(path);
  return outer;
}

Paths Grown(const Paths& closed, const Paths& lines, double millimetres) {
  ClipperLib::ClipperOffset offset(2.0);
  offset.AddPaths(closed, ClipperLib::jtMiter, ClipperLib::etClosedPolygon);
  offset.AddPaths(lines, ClipperLib::jtMiter, ClipperLib::etOpenSquare);
  Paths grown;
  offset.Execute(grown, millimetres * UnitsPerMillimetre);
  return Outer(grown);
}

std::size_t CornersOf(const Paths& paths) {
  std::size_t corners = 0;
  for (const Path& path : paths) corners += path.size();
  return corners;
}

cInt Cross(IntPoint a, IntPoint b, IntPoint c) {
  return (b.X - a.X) * (c.Y - a.Y) - (b.Y - a.Y) * (c.X - a.X);
}

Path HullOf(const Paths& paths) {
  Path points;
  for (const Path& path : paths) points.insert(points.end(), path.begin(), path.end());
  const auto before = [](IntPoint a, IntPoint b) { return a.X < b.X || (a.X == b.X && a.Y < b.Y); };
  std::ranges::sort(points, before);
  Path hull;
  const auto half = [&](const auto& range) {
    const std::size_t first = hull.size();
    for (const IntPoint point : range) {
      while (hull.size() >= first + 2 && Cross(hull[hull.size() - 2], hull.back(), point) <= 0)
        hull.pop_back();
      hull.push_back(point);
    }
    hull.pop_back();
  };
  half(points);
  std::ranges::reverse(points);
  half(points);
  return hull;
}

bool Contains(const Paths& outer, const Paths& inner) {
  ClipperLib::Clipper clipper;
  clipper.AddPaths(inner, ClipperLib::ptSubject, true);
  clipper.AddPaths(outer, ClipperLib::ptClip, true);
  Paths rest;
  clipper.Execute(ClipperLib::ctDifference, rest, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
  return rest.empty();
}

// Fewer corners, with nothing of the outlines left outside.
Paths Simplified(const Paths& outlines) {
  for (const double step : {0.05, 0.2, 0.5, 1.0}) {
    if (CornersOf(outlines) <= EnoughCorners) return outlines;
    Paths simple = Grown(outlines, {}, step);
    ClipperLib::CleanPolygons(simple, step * UnitsPerMillimetre);
    ClipperLib::SimplifyPolygons(simple, ClipperLib::pftNonZero);
    simple = Outer(simple);
    const bool enough = CornersOf(simple) <= EnoughCorners || step == 1.0;
    if (enough && CornersOf(simple) <= MaximumCorners && Contains(simple, outlines)) return simple;
  }
  if (CornersOf(outlines) <= MaximumCorners) return outlines;
  return {HullOf(outlines)};
}

struct Lines {
  Paths closed;  // of the closed cuts, united
  Paths other;   // of all other tool paths
};

Lines LinesOf(const CutJob& job) {
  Lines lines;
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      Path line = Rounded(Flatten(contour, FlatTolerance));
      const bool isOutline =
          path.operation == Operation::Cut && contour.closed && ClipperLib::Area(line) != 0;
      if (isOutline && !ClipperLib::Orientation(line)) ClipperLib::ReversePath(line);
      if (!isOutline && contour.closed && !line.empty()) line.push_back(line.front());
      (isOutline ? lines.closed : lines.other).push_back(std::move(line));
    }
  }
  ClipperLib::SimplifyPolygons(lines.closed, ClipperLib::pftNonZero);
  lines.closed = Outer(lines.closed);
  return lines;
}

bool IsConvex(const Path& path) {
  const std::size_t count = path.size();
  double turned = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const IntPoint a = path[i];
    const IntPoint b = path[(i + 1) % count];
    const IntPoint c = path[(i + 2) % count];
    const cInt cross = Cross(a, b, c);
    if (cross < 0) return false;
    turned +=
        std::atan2(static_cast<double>(cross),
                   static_cast<double>((b.X - a.X) * (c.X - b.X) + (b.Y - a.Y) * (c.Y - b.Y)));
  }
  return turned < 3 * std::numbers::pi;
}

void SetBox(TurnedShape& shape, const CutJob& job, const Transform& turning) {
  Box box;
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) box.Add(BoxOf(Transformed(contour, turning)));
  }
  shape.left = static_cast<cInt>(std::floor(box.left * UnitsPerMillimetre));
  shape.bottom = static_cast<cInt>(std::floor(box.bottom * UnitsPerMillimetre));
  shape.right = static_cast<cInt>(std::ceil(box.right * UnitsPerMillimetre));
  shape.top = static_cast<cInt>(std::ceil(box.top * UnitsPerMillimetre));
}

Path Turned(const Path& path, const Transform& turning) {
  Path turned;
  turned.reserve(path.size());
  for (const IntPoint point : path) {
    const Point at = turning.Apply({static_cast<double>(point.X), static_cast<double>(point.Y)});
    turned.emplace_back(std::llround(at.x), std::llround(at.y));
  }
  return turned;
}

std::size_t LowestOf(const Path& path) {
  const auto lower = [](IntPoint a, IntPoint b) { return a.Y < b.Y || (a.Y == b.Y && a.X < b.X); };
  return static_cast<std::size_t>(std::ranges::min_element(path, lower) - path.begin());
}

// The edges of both in the order of their directions.
Path ConvexSum(const Path& a, const Path& b) {
  const std::size_t firstA = LowestOf(a);
  const std::size_t firstB = LowestOf(b);
  Path sum;
  sum.reserve(a.size() + b.size());
  for (std::size_t i = 0, j = 0; i < a.size() || j < b.size();) {
    const IntPoint fromA = a[(firstA + i) % a.size()];
    const IntPoint toA = a[(firstA + i + 1) % a.size()];
    const IntPoint fromB = b[(firstB + j) % b.size()];
    const IntPoint toB = b[(firstB + j + 1) % b.size()];
    sum.emplace_back(fromA.X + fromB.X, fromA.Y + fromB.Y);
    const cInt turn = (toA.X - fromA.X) * (toB.Y - fromB.Y) - (toA.Y - fromA.Y) * (toB.X - fromB.X);
    const bool takeA = j == b.size() || (i < a.size() && turn >= 0);
    const bool takeB = i == a.size() || (j < b.size() && turn <= 0);
    if (takeA) ++i;
    if (takeB) ++j;
  }
  return sum;
}

}  // namespace

Transform Turning(double degrees) {
  double cosine = std::cos(degrees * std::numbers::pi / 180);
  double sine = std::sin(degrees * std::numbers::pi / 180);
  if (std::fmod(degrees, 90) == 0) {
    cosine = std::round(cosine);
    sine = std::round(sine);
  }
  return {.a = cosine, .b = sine, .c = -sine, .d = cosine};
}

PieceShape ShapeOf(const CutJob& job, double gap, const std::vector<double>& turns) {
  Lines lines = LinesOf(job);
  if (lines.closed.empty()) lines = {.closed = {Rectangle(ToolBoxOf(job))}, .other = {}};
  PieceShape piece;
  for (const Path& path : lines.closed)
    piece.area += ClipperLib::Area(path) / (UnitsPerMillimetre * UnitsPerMillimetre);
  const double growth = gap / 2 + FlatTolerance + Reserve;
  const Paths outlines = Simplified(Grown(lines.closed, lines.other, growth));
  for (const double degrees : turns) {
    TurnedShape shape{.turn = degrees, .outlines = {}, .convex = {}};
    const Transform turning = Turning(degrees);
    for (const Path& outline : outlines) {
      shape.outlines.push_back(Turned(outline, turning));
      shape.convex.push_back(IsConvex(shape.outlines.back()));
    }
    SetBox(shape, job, turning);
    piece.turns.push_back(std::move(shape));
  }
  return piece;
}

Paths Forbidden(const TurnedShape& standing, const TurnedShape& moving) {
  Paths forbidden;
  for (std::size_t i = 0; i < moving.outlines.size(); ++i) {
    Path turned = moving.outlines[i];
    for (IntPoint& point : turned) point = {-point.X, -point.Y};
    for (std::size_t j = 0; j < standing.outlines.size(); ++j) {
      if (moving.convex[i] && standing.convex[j]) {
        forbidden.push_back(ConvexSum(standing.outlines[j], turned));
        continue;
      }
      Paths sum;
      ClipperLib::MinkowskiSum(turned, standing.outlines[j], sum, true);
      for (Path& path : sum)
        if (ClipperLib::Orientation(path)) forbidden.push_back(std::move(path));
    }
  }
  return forbidden;
}

}  // namespace rastrel::cutting::nest
