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
// Beyond these a line is hulls before anything else is made of it: to grow a saw of 100,000 teeth
// takes hours.
constexpr std::size_t CornersBeforeHulls = 4000;
constexpr std::size_t HullsInLine = 500;

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

double DistanceToLine(IntPoint point, IntPoint from, IntPoint to) {
  const auto dx = static_cast<double>(to.X - from.X);
  const auto dy = static_cast<double>(to.Y - from.Y);
  const auto px = static_cast<double>(point.X - from.X);
  const auto py = static_cast<double>(point.Y - from.Y);
  const double square = dx * dx + dy * dy;
  const double along = square > 0 ? std::clamp((px * dx + py * dy) / square, 0.0, 1.0) : 0;
  return std::hypot(px - along * dx, py - along * dy);
}

// How far a corner of `outlines` is from the lines of `simple` at most.
double FurthestFrom(const Paths& simple, const Paths& outlines) {
  double furthest = 0;
  for (const Path& outline : outlines)
    for (const IntPoint point : outline) {
      double nearest = 1e300;
      for (const Path& path : simple)
        for (std::size_t i = 0; i < path.size() && nearest > furthest; ++i)
          nearest = std::min(nearest, DistanceToLine(point, path[i], path[(i + 1) % path.size()]));
      furthest = std::max(furthest, nearest);
    }
  return furthest;
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

// Hulls of some hundred parts of the line, each from the last corner of the one before: all of the
// line is within them, however its corners zigzag. A part that is straight has none. `joints` gets
// the ends of the parts.
Paths HullsAlong(const Path& line, Path& joints) {
  const std::size_t step = line.size() / HullsInLine + 1;
  Paths hulls;
  for (std::size_t first = 0; first + 1 < line.size(); first += step) {
    const auto begin = line.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end =
        line.begin() + static_cast<std::ptrdiff_t>(std::min(first + step + 1, line.size()));
    joints.push_back(*begin);
    Path hull = HullOf({Path(begin, end)});
    if (hull.size() > 2) hulls.push_back(std::move(hull));
  }
  joints.push_back(line.back());
  return hulls;
}

// The outlines around all of a closed line with many corners: the hulls of its parts, and the area
// that the joints of these go around.
Paths AroundLine(Path line) {
  line.push_back(line.front());
  Path joints;
  Paths around = HullsAlong(line, joints);
  Paths within;
  ClipperLib::SimplifyPolygon(joints, within, ClipperLib::pftNonZero);
  within = Outer(within);
  around.insert(around.end(), within.begin(), within.end());
  ClipperLib::SimplifyPolygons(around, ClipperLib::pftNonZero);
  return Outer(around);
}

double AreaOf(const Paths& outlines) {
  double area = 0;
  for (const Path& path : outlines)
    area += ClipperLib::Area(path) / (UnitsPerMillimetre * UnitsPerMillimetre);
  return area;
}

struct Lines {
  Paths closed;             // of the closed cuts, united
  Paths other;              // of all other tool paths
  Paths hulls;              // in place of those with many corners
  double added = 0;         // area by which thinned outlines are too large, square millimetres
  std::size_t corners = 0;  // before that
};

void AddLine(Lines& lines, Path line, bool isOutline) {
  const bool isLong = line.size() > CornersBeforeHulls;
  if (isLong && isOutline) {
    const Paths around = AroundLine(line);
    lines.added += AreaOf(around) - AreaOf({line});
    lines.closed.insert(lines.closed.end(), around.begin(), around.end());
  } else if (isLong) {
    Path joints;
    const Paths along = HullsAlong(line, joints);
    lines.hulls.insert(lines.hulls.end(), along.begin(), along.end());
    lines.other.push_back(std::move(joints));
  } else {
    (isOutline ? lines.closed : lines.other).push_back(std::move(line));
  }
}

Lines LinesOf(const CutJob& job) {
  Lines lines;
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      Path line = Rounded(Flatten(contour, FlatTolerance));
      lines.corners += line.size();
      if (lines.corners > MaximumNestCorners) return lines;
      const bool isOutline =
          path.operation == Operation::Cut && contour.closed && ClipperLib::Area(line) != 0;
      if (isOutline && !ClipperLib::Orientation(line)) ClipperLib::ReversePath(line);
      if (!isOutline && contour.closed && !line.empty()) line.push_back(line.front());
      AddLine(lines, std::move(line), isOutline);
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

// Turns that differ by a quarter differ by nothing else: only the rest of the angle is rounded.
Path Turned(const Path& path, double degrees) {
  const double rest = std::fmod(degrees, 90);
  const Transform turning = Turning(rest);
  Path turned;
  turned.reserve(path.size());
  for (const IntPoint point : path) {
    const Point at = turning.Apply({static_cast<double>(point.X), static_cast<double>(point.Y)});
    IntPoint whole(std::llround(at.x), std::llround(at.y));
    for (double quarter = rest; quarter < degrees; quarter += 90) whole = {-whole.Y, whole.X};
    turned.push_back(whole);
  }
  return turned;
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
  PieceShape piece{.corners = lines.corners};
  if (lines.corners > MaximumNestCorners) return piece;
  if (lines.closed.empty()) {
    lines = {};
    lines.closed = {Rectangle(ToolBoxOf(job))};
  }
  piece.area = AreaOf(lines.closed) - lines.added;
  lines.closed.insert(lines.closed.end(), lines.hulls.begin(), lines.hulls.end());
  const double growth = gap / 2 + FlatTolerance + Reserve;
  const Paths grown = Grown(lines.closed, lines.other, growth);
  const Paths outlines = Simplified(grown);
  if (CornersOf(outlines) < CornersOf(grown))
    piece.thinnedBy = FurthestFrom(outlines, grown) / UnitsPerMillimetre;
  for (const double degrees : turns) {
    TurnedShape shape{.turn = degrees, .outlines = {}, .convex = {}};
    const Transform turning = Turning(degrees);
    for (const Path& outline : outlines) {
      shape.outlines.push_back(Turned(outline, degrees));
      shape.convex.push_back(IsConvex(shape.outlines.back()));
    }
    SetBox(shape, job, turning);
    piece.turns.push_back(std::move(shape));
  }
  return piece;
}

}  // namespace rastrel::cutting::nest
