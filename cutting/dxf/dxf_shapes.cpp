#include "cutting/dxf/dxf_shapes.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "cutting/drawing/arc.h"
#include "cutting/drawing/maps.h"
#include "cutting/dxf/spline.h"

namespace rastrel::cutting {
namespace {

constexpr double WholeTurn = 2 * std::numbers::pi;
constexpr double MaximumBulge = 1e6;
constexpr double MinimumBulge = 1e-9;
constexpr double Tolerance = 0.001;  // of splines that no cubic equals

Ellipse CircleAt(Point center, double radius, const Transform& map) {
  return {map.Apply(center), Turned(map, {radius, 0}), Turned(map, {0, radius})};
}

void AppendBulge(Contour& contour, Point from, Point to, double bulge, const Transform& map) {
  const Point chord{to.x - from.x, to.y - from.y};
  const bool isStraight = std::abs(bulge) < MinimumBulge || std::abs(bulge) > MaximumBulge ||
                          (chord.x == 0 && chord.y == 0);
  if (isStraight) {
    contour.segments.push_back(LineTo(map.Apply(to)));
    return;
  }
  const double away = (1 - bulge * bulge) / (4 * bulge);
  const Point center{(from.x + to.x) / 2 - away * chord.y, (from.y + to.y) / 2 + away * chord.x};
  const double begin = std::atan2(from.y - center.y, from.x - center.x);
  AppendArc(contour, CircleAt(center, Distance(center, from), map), begin,
            begin + 4 * std::atan(bulge));
  contour.segments.back().end = map.Apply(to);
}

std::vector<Contour> One(Contour contour) {
  std::vector<Contour> contours;
  contours.push_back(std::move(contour));
  return contours;
}

double Radians(double degrees) { return std::fmod(degrees, 360) / 180 * std::numbers::pi; }

// From one angle counterclockwise to another.
Contour ArcOf(const Ellipse& ellipse, double from, double to) {
  double angle = std::fmod(to - from, WholeTurn);
  if (angle < 0) angle += WholeTurn;
  if (angle < 1e-12 || angle > WholeTurn - 1e-9) return WholeEllipse(ellipse);
  Contour contour{.start = ellipse.At(from), .segments = {}};
  AppendArc(contour, ellipse, from, from + angle);
  return contour;
}

DxfShape Line(DxfGroups& groups, const Transform& map) {
  Contour line{.start = map.Apply({groups.Number(10), groups.Number(20)}), .segments = {}};
  line.segments.push_back(LineTo(map.Apply({groups.Number(11), groups.Number(21)})));
  return {.contours = One(std::move(line))};
}

DxfShape CircleOrArc(DxfGroups& groups, const Transform& map, bool isArc) {
  const double radius = groups.Number(40);
  if (radius <= 0) return {DxfShape::Result::Unsound};
  const Ellipse circle = CircleAt({groups.Number(10), groups.Number(20)}, radius, map);
  if (!isArc) return {.contours = One(WholeEllipse(circle))};
  const double from = Radians(groups.Number(50));
  const double to = Radians(groups.Number(51));
  return {.contours = One(ArcOf(circle, from, to))};
}

DxfShape EllipseOf(DxfGroups& groups, const Transform& map) {
  const Point major{groups.Number(11), groups.Number(21)};
  const double ratio = groups.Number(40, 1) * (groups.Number(230, 1) < 0 ? -1 : 1);
  if ((major.x == 0 && major.y == 0) || ratio == 0) return {DxfShape::Result::Unsound};
  const Ellipse ellipse{map.Apply({groups.Number(10), groups.Number(20)}), Turned(map, major),
                        Turned(map, {-major.y * ratio, major.x * ratio})};
  return {.contours = One(ArcOf(ellipse, groups.Number(41), groups.Number(42, WholeTurn)))};
}

DxfShape SplineOf(DxfGroups& groups, const Transform& map) {
  Spline spline{.degree = groups.Whole(71, 3), .knots = {}, .controls = {}};
  double x = 0;
  for (const DxfGroup& group : groups.All()) {
    if (group.code == 10) x = groups.NumberOf(group);
    if (group.code == 20) spline.controls.push_back(map.Apply({x, groups.NumberOf(group)}));
    if (group.code == 40) spline.knots.push_back(groups.NumberOf(group));
    if (group.code == 41) spline.weights.push_back(groups.NumberOf(group));
  }
  if (!IsSound(spline)) return {DxfShape::Result::Unsound};
  Contour contour = ContourOf(spline, Tolerance);
  contour.closed = (groups.Whole(70) & 1) != 0 && Distance(contour.start, contour.End()) < 1e-6;
  if (contour.closed) contour.segments.back().end = contour.start;
  return {.contours = One(std::move(contour))};
}

DxfShape LightPolyline(DxfGroups& groups, const Transform& map) {
  std::vector<DxfVertex> vertices;
  for (const DxfGroup& group : groups.All()) {
    if (group.code == 10) vertices.push_back({.point = {groups.NumberOf(group), 0}});
    if (vertices.empty()) continue;
    if (group.code == 20) vertices.back().point.y = groups.NumberOf(group);
    if (group.code == 42) vertices.back().bulge = groups.NumberOf(group);
  }
  return {.contours = PolylineOf(vertices, (groups.Whole(70) & 1) != 0, map)};
}

}  // namespace

std::vector<Contour> PolylineOf(std::span<const DxfVertex> vertices, bool isClosed,
                                const Transform& map) {
  if (vertices.empty()) return {};
  Contour contour{.start = map.Apply(vertices.front().point), .segments = {}, .closed = isClosed};
  for (std::size_t i = 1; i < vertices.size(); ++i)
    AppendBulge(contour, vertices[i - 1].point, vertices[i].point, vertices[i - 1].bulge, map);
  // The straight way back is the closed contour's own.
  if (isClosed && std::abs(vertices.back().bulge) >= MinimumBulge)
    AppendBulge(contour, vertices.back().point, vertices.front().point, vertices.back().bulge, map);
  return One(std::move(contour));
}

DxfShape ShapeOf(std::string_view type, DxfGroups& groups, const Transform& map) {
  if (type == "LINE") return Line(groups, map);
  if (type == "LWPOLYLINE") return LightPolyline(groups, map);
  if (type == "CIRCLE") return CircleOrArc(groups, map, false);
  if (type == "ARC") return CircleOrArc(groups, map, true);
  if (type == "ELLIPSE") return EllipseOf(groups, map);
  if (type == "SPLINE") return SplineOf(groups, map);
  if (type == "POINT")
    return {.contours =
                One({.start = map.Apply({groups.Number(10), groups.Number(20)}), .segments = {}})};
  return {DxfShape::Result::Unknown};
}

}  // namespace rastrel::cutting
