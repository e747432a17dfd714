#include "host/layout/placing.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rastrel::layout {

namespace {

struct Direction {
  double cosine, sine;
};

// Sines of whole quarter turns are not exact.
Direction DirectionOf(double degrees) {
  const double turn = std::remainder(degrees, 360.0);
  if (turn == 0) return {1, 0};
  if (turn == 90) return {0, 1};
  if (turn == -90) return {0, -1};
  if (std::abs(turn) == 180) return {-1, 0};
  const double radians = turn * std::numbers::pi / 180;
  return {std::cos(radians), std::sin(radians)};
}

// 0, 1 or 2: the left, middle or right part; the top, middle or bottom one.
int ColumnOf(std::int32_t origin) { return (origin - 1) % 3; }
int RowOf(std::int32_t origin) { return (origin - 1) / 3; }

CWorldPoint CenterOf(const CWorldRect& rect) {
  return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

CWorldRect FrameAbout(const CWorldPoint& center, double width, double height) {
  return {center.x - width / 2, center.y + height / 2, center.x + width / 2, center.y - height / 2};
}

// The factors from a graphic's own size to the one that is asked for.
struct Scale {
  double x, y;
};
Scale ScaleOf(const Placement& placement, double width, double height) {
  Scale scale{1, 1};
  const bool hasWidth = placement.width > 0 && width > 0;
  const bool hasHeight = placement.height > 0 && height > 0;
  if (hasWidth) scale.x = placement.width / width;
  if (hasHeight) scale.y = placement.height / height;
  if (hasWidth && !(placement.height > 0)) scale.y = scale.x;
  if (hasHeight && !(placement.width > 0)) scale.x = scale.y;
  return scale;
}

}  // namespace

bool IsLength(double value) { return std::abs(value) <= LargestLength; }

CWorldPoint PointFrom(const CWorldRect& frame, std::int32_t origin, double x, double y) {
  const CWorldPoint corner = PartOf({frame.left, frame.right, frame.bottom, frame.top}, origin);
  return {corner.x + (ColumnOf(origin) == 2 ? -x : x), corner.y + (RowOf(origin) == 0 ? -y : y)};
}

CWorldPoint PartOf(const BOUNDS& box, std::int32_t origin) {
  const double across = ColumnOf(origin) / 2.0;
  const double down = RowOf(origin) / 2.0;
  return {box.xmin + across * (box.xmax - box.xmin), box.ymax - down * (box.ymax - box.ymin)};
}

TM TurnAbout(const CWorldPoint& center, double degrees) {
  const auto [cosine, sine] = DirectionOf(degrees);
  return {cosine,
          sine,
          -sine,
          cosine,
          center.x - cosine * center.x + sine * center.y,
          center.y - sine * center.x - cosine * center.y};
}

TM Composed(const TM& first, const TM& second) {
  return {second.a * first.a + second.c * first.b,
          second.b * first.a + second.d * first.b,
          second.a * first.c + second.c * first.d,
          second.b * first.c + second.d * first.d,
          second.a * first.tx + second.c * first.ty + second.tx,
          second.b * first.tx + second.d * first.ty + second.ty};
}

bool IsPlacement(const Placement& placement) {
  for (const double value : {placement.x, placement.y, placement.width, placement.height}) {
    if (!IsLength(value)) return false;
  }
  return std::isfinite(placement.rotation) && placement.width >= 0 && placement.height >= 0;
}

TM TmOf(const Placement& placement, const CWorldRect& frame, const BOUNDS& bounds) {
  const Scale scale = ScaleOf(placement, bounds.xmax - bounds.xmin, bounds.ymax - bounds.ymin);
  const CWorldPoint part = PartOf(bounds, placement.origin);
  const CWorldPoint point = PointFrom(frame, placement.origin, placement.x, placement.y);
  const TM scaled{scale.x, 0, 0, scale.y, point.x - scale.x * part.x, point.y - scale.y * part.y};
  return Composed(scaled, TurnAbout(point, placement.rotation));
}

CWorldRect ContentFrame(const CWorldRect& plate, double degrees) {
  const bool exchanged = DirectionOf(degrees).cosine == 0;
  if (!exchanged) return plate;
  return FrameAbout(CenterOf(plate), plate.top - plate.bottom, plate.right - plate.left);
}

CWorldRect FrameInside(const CWorldRect& plate, double degrees) {
  const auto [cosine, sine] = DirectionOf(degrees);
  if (cosine == 0 || sine == 0) return ContentFrame(plate, degrees);
  const double width = plate.right - plate.left;
  const double height = plate.top - plate.bottom;
  const double across = width * std::abs(cosine) + height * std::abs(sine);
  const double upward = width * std::abs(sine) + height * std::abs(cosine);
  const double factor = std::min(width / across, height / upward);
  return FrameAbout(CenterOf(plate), width * factor, height * factor);
}

}  // namespace rastrel::layout
