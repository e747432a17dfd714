#include "cutting/drawing/arc.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rastrel::cutting {
namespace {

// A cubic that covers a quarter of a circle is 2.7e-4 of the radius beside it, and one that covers
// a part of the quarter less by the sixth power.
constexpr double QuarterError = 2.8e-4;
constexpr double MaximumError = 0.0005;
constexpr double MaximumPiecesOfQuarter = 16;
constexpr double Quarter = std::numbers::pi / 2;

int PiecesFor(const Ellipse& ellipse, double angle) {
  const double radius =
      std::hypot(std::hypot(ellipse.u.x, ellipse.u.y), std::hypot(ellipse.v.x, ellipse.v.y));
  const double needed = std::ceil(std::pow(radius * QuarterError / MaximumError, 1.0 / 6));
  const double perQuarter =
      needed > 2 ? std::min(needed, MaximumPiecesOfQuarter) : 2;  // also where it is no number
  return std::max(1, static_cast<int>(std::ceil(angle / Quarter * perQuarter - 1e-9)));
}

}  // namespace

Point Ellipse::At(double angle) const {
  const double cosine = std::cos(angle);
  const double sine = std::sin(angle);
  return {center.x + cosine * u.x + sine * v.x, center.y + cosine * u.y + sine * v.y};
}

void AppendArc(Contour& contour, const Ellipse& ellipse, double from, double to) {
  const double whole = std::clamp(to - from, -4 * Quarter, 4 * Quarter);
  const int pieces = PiecesFor(ellipse, std::abs(whole));
  const double step = whole / pieces;
  const double length = 4.0 / 3 * std::tan(step / 4);
  const auto beside = [&](double angle, double factor) {
    const Point at = ellipse.At(angle);
    const double cosine = std::cos(angle) * factor;
    const double sine = std::sin(angle) * factor;
    return Point{at.x - sine * ellipse.u.x + cosine * ellipse.v.x,
                 at.y - sine * ellipse.u.y + cosine * ellipse.v.y};
  };
  for (int piece = 0; piece < pieces; ++piece) {
    const double begin = from + piece * step;
    const double end = piece + 1 == pieces ? from + whole : begin + step;
    contour.segments.push_back(
        CurveTo(beside(begin, length), beside(end, -length), ellipse.At(end)));
  }
}

Contour WholeEllipse(const Ellipse& ellipse) {
  Contour contour{.start = ellipse.At(0), .segments = {}, .closed = true};
  AppendArc(contour, ellipse, 0, 4 * Quarter);
  contour.segments.back().end = contour.start;
  return contour;
}

}  // namespace rastrel::cutting
