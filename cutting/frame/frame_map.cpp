#include "cutting/frame/frame_map.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutting {
namespace {

constexpr int MaximumHalvings = 10;

struct Curve {
  std::array<Point, 4> p;
};

Point Middle(Point a, Point b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }

Point Stepped(Point from, Point way, double factor) {
  return {from.x + way.x * factor, from.y + way.y * factor};
}

// The image of a direction at a point.
Point Turned(const Transform& at, Point from, Point to) {
  const double x = to.x - from.x;
  const double y = to.y - from.y;
  return {at.a * x + at.c * y, at.b * x + at.d * y};
}

// The cubic curve with the ends of the image, and its direction and speed there.
Curve HermiteImage(const Curve& curve, const FrameMap& map) {
  const Point start = map.Apply(curve.p[0]);
  const Point end = map.Apply(curve.p[3]);
  const Point out = Turned(map.At(curve.p[0]), curve.p[0], curve.p[1]);
  const Point in = Turned(map.At(curve.p[3]), curve.p[3], curve.p[2]);
  return {{start, Stepped(start, out, 1), Stepped(end, in, 1), end}};
}

// A bound of the distance between the cubic curve Q and the image N(t) / w(t). Their difference
// times w is a polynomial of degree 6, which lies within its Bernstein coefficients; and w is
// nowhere less than the least of its own.
double DistanceBound(const Curve& curve, const Curve& image, const FrameMap& map) {
  constexpr std::array Cubic{1.0, 3.0, 3.0, 1.0};
  constexpr std::array Sextic{1.0, 6.0, 15.0, 20.0, 15.0, 6.0, 1.0};
  std::array<Point, 7> sums{};
  double least = map.Weight(curve.p[0]);
  for (std::size_t i = 0; i < 4; ++i) {
    const double weight = map.Weight(curve.p[i]);
    const Point mapped = map.Apply(curve.p[i]);
    least = std::min(least, weight);
    for (std::size_t j = 0; j < 4; ++j) {
      const double factor = Cubic[i] * Cubic[j] * weight;
      sums[i + j].x += factor * (mapped.x - image.p[j].x);
      sums[i + j].y += factor * (mapped.y - image.p[j].y);
    }
  }
  double bound = 0;
  for (std::size_t k = 0; k < sums.size(); ++k)
    bound = std::max(bound, std::hypot(sums[k].x, sums[k].y) / Sextic[k]);
  return bound / least;
}

void AddImage(Contour& mapped, const Curve& curve, const FrameMap& map, double tolerance,
              int halvings) {
  const Curve image = HermiteImage(curve, map);
  if (halvings == 0 || DistanceBound(curve, image, map) <= tolerance) {
    mapped.segments.push_back(CurveTo(image.p[1], image.p[2], image.p[3]));
    return;
  }
  const auto& p = curve.p;
  const Point a = Middle(p[0], p[1]);
  const Point b = Middle(p[1], p[2]);
  const Point c = Middle(p[2], p[3]);
  const Point ab = Middle(a, b);
  const Point bc = Middle(b, c);
  const Point middle = Middle(ab, bc);
  AddImage(mapped, {{p[0], a, ab, middle}}, map, tolerance, halvings - 1);
  AddImage(mapped, {{middle, bc, c, p[3]}}, map, tolerance, halvings - 1);
}

Transform AffineOf(const FrameMap& map) {
  const double w = map.m[8];
  return {map.m[0] / w, map.m[3] / w, map.m[1] / w, map.m[4] / w, map.m[2] / w, map.m[5] / w};
}

RegistrationMark Mapped(const RegistrationMark& mark, const FrameMap& map) {
  const Transform at = map.At(mark.center);
  RegistrationMark mapped = mark;
  mapped.center = map.Apply(mark.center);
  mapped.size = mark.size * std::sqrt(std::abs(at.a * at.d - at.b * at.c));
  if (mark.shape == RegistrationMark::Shape::Corner)
    mapped.rotation = mark.rotation + std::atan2(at.b, at.a) * 180 / std::numbers::pi;
  return mapped;
}

std::array<Point, 4> CornersOf(const CutJob& job) {
  return {Point{0, 0}, Point{job.width, 0}, Point{0, job.height}, Point{job.width, job.height}};
}

// Calls `use` with each point and control point.
template <typename Use>
void ForEachPoint(const Contour& contour, Use use) {
  use(contour.start);
  for (const Segment& segment : contour.segments) {
    if (segment.isCurve) {
      use(segment.first);
      use(segment.second);
    }
    use(segment.end);
  }
}

class ImageCheck {
 public:
  ImageCheck(const CutJob& job, const FrameMap& map)
      : m_Map(map), m_Middle(map.Weight({job.width / 2, job.height / 2})) {}
  void Add(Point point) {
    const double share = m_Map.Weight(point) / m_Middle;
    const Point image = m_Map.Apply(point);
    if (m_Middle > 0 && share >= 0.1 && share <= 10 && std::isfinite(image.x) &&
        std::isfinite(image.y))
      return;
    if (m_Result)
      m_Result = FailureOf("the map of the marks has no sound image of the point " +
                               os::ShortDecimal(point.x, 2) + "," + os::ShortDecimal(point.y, 2) +
                               " of the page",
                           FailureCode::BadInput);
  }
  [[nodiscard]] const Expected<void>& Result() const { return m_Result; }

 private:
  const FrameMap& m_Map;
  double m_Middle;
  Expected<void> m_Result;
};

Expected<void> CheckImages(const CutJob& job, const FrameMap& map) {
  ImageCheck check(job, map);
  for (const CutPath& path : job.paths)
    for (const Contour& contour : path.contours)
      ForEachPoint(contour, [&](Point point) { check.Add(point); });
  for (const RegistrationMark& mark : job.marks) check.Add(mark.center);
  for (const Point corner : CornersOf(job)) check.Add(corner);
  return check.Result();
}

}  // namespace

Point FrameMap::Apply(Point point) const {
  const double w = Weight(point);
  return {(m[0] * point.x + m[1] * point.y + m[2]) / w,
          (m[3] * point.x + m[4] * point.y + m[5]) / w};
}

Transform FrameMap::At(Point point) const {
  const double w = Weight(point);
  const Point image = Apply(point);
  Transform at{.a = (m[0] - image.x * m[6]) / w,
               .b = (m[3] - image.y * m[6]) / w,
               .c = (m[1] - image.x * m[7]) / w,
               .d = (m[4] - image.y * m[7]) / w};
  at.e = image.x - at.a * point.x - at.c * point.y;
  at.f = image.y - at.b * point.x - at.d * point.y;
  return at;
}

FrameMap Chained(const FrameMap& first, const FrameMap& second) {
  FrameMap chained;
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      chained.m[row * 3 + column] = second.m[row * 3] * first.m[column] +
                                    second.m[row * 3 + 1] * first.m[3 + column] +
                                    second.m[row * 3 + 2] * first.m[6 + column];
  return chained;
}

Contour Mapped(const Contour& contour, const FrameMap& map, double tolerance) {
  if (map.IsAffine()) return Transformed(contour, AffineOf(map));
  Contour mapped{.start = map.Apply(contour.start), .segments = {}, .closed = contour.closed};
  mapped.segments.reserve(contour.segments.size());
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    if (segment.isCurve)
      AddImage(mapped, {{from, segment.first, segment.second, segment.end}}, map, tolerance,
               MaximumHalvings);
    else
      mapped.segments.push_back(LineTo(map.Apply(segment.end)));
    from = segment.end;
  }
  return mapped;
}

Expected<CutJob> Mapped(const CutJob& job, const FrameMap& map) {
  if (auto checked = CheckImages(job, map); !checked) return checked.Error();
  CutJob mapped = job;
  for (CutPath& path : mapped.paths)
    for (Contour& contour : path.contours) contour = Mapped(contour, map);
  for (RegistrationMark& mark : mapped.marks) mark = Mapped(mark, map);
  Box page;
  for (const Point corner : CornersOf(job)) page.Add(map.Apply(corner));
  mapped.width = std::max(page.right, 0.0);
  mapped.height = std::max(page.top, 0.0);
  return mapped;
}

}  // namespace rastrel::cutting
