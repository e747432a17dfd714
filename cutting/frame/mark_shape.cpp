#include "cutting/frame/mark_shape.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rastrel::cutting {
namespace {

Contour Polygon(const std::vector<Point>& points) {
  Contour contour{.start = points.front(), .segments = {}, .closed = true};
  for (std::size_t i = 1; i < points.size(); ++i) contour.segments.push_back(LineTo(points[i]));
  return contour;
}

Contour Disc(double radius) {
  // A quarter of a circle by one curve, to 0.03 % of the radius.
  const double k = radius * 4 * (std::numbers::sqrt2 - 1) / 3;
  return {.start = {radius, 0},
          .segments = {CurveTo({radius, k}, {k, radius}, {0, radius}),
                       CurveTo({-k, radius}, {-radius, k}, {-radius, 0}),
                       CurveTo({-radius, -k}, {-k, -radius}, {0, -radius}),
                       CurveTo({k, -radius}, {radius, -k}, {radius, 0})},
          .closed = true};
}

Contour Corner(double size, double bar) {
  return Polygon({{0, 0}, {size, 0}, {size, bar}, {bar, bar}, {bar, size}, {0, size}});
}

Contour Cross(double half, double bar) {
  return Polygon({{-half, -bar},
                  {-bar, -bar},
                  {-bar, -half},
                  {bar, -half},
                  {bar, -bar},
                  {half, -bar},
                  {half, bar},
                  {bar, bar},
                  {bar, half},
                  {-bar, half},
                  {-bar, bar},
                  {-half, bar}});
}

// Turned around the origin. Quarters are exact, so that their edges stay upright.
Transform Turn(double degrees) {
  const double quarters = degrees / 90;
  double c = std::cos(degrees * std::numbers::pi / 180);
  double s = std::sin(degrees * std::numbers::pi / 180);
  if (quarters == std::round(quarters)) {
    c = std::round(c);
    s = std::round(s);
  }
  return {.a = c, .b = s, .c = -s, .d = c};
}

}  // namespace

double BarWidthOf(const RegistrationMark& mark) {
  return std::min(std::clamp(mark.size / 10, 0.3, 1.0), mark.size);
}

std::vector<Contour> InkOf(const RegistrationMark& mark) {
  const double bar = BarWidthOf(mark);
  Transform place;
  Contour ink;
  switch (mark.shape) {
    case RegistrationMark::Shape::Corner:
      ink = Corner(mark.size, bar);
      place = Turn(mark.rotation);
      break;
    case RegistrationMark::Shape::Cross: ink = Cross(mark.size / 2, bar / 2); break;
    case RegistrationMark::Shape::Circle: ink = Disc(mark.size / 2); break;
  }
  place.e = mark.center.x;
  place.f = mark.center.y;
  return {Transformed(ink, place)};
}

Box BoxOf(const RegistrationMark& mark) {
  Box box;
  for (const Contour& contour : InkOf(mark)) box.Add(BoxOf(contour));
  return box;
}

}  // namespace rastrel::cutting
