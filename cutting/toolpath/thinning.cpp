#include "cutting/toolpath/thinning.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace rastrel::cutting {
namespace {

// The directions from an anchor in which a line passes all points since then within the distance,
// and goes no shorter than to any of them. The distance of such a point from the line is then that
// from its foot on it.
//
//            . point 2
//     anchor ------------- the line may end here
//            \_ point 1
class Fan {
 public:
  Fan(Point anchor, double distance) : m_Anchor(anchor), m_Distance(distance) {}

  /// Whether a line to the point passes all points before it.
  [[nodiscard]] bool Reaches(Point point) const {
    const double away = Distance(m_Anchor, point);
    if (away < m_Farthest) return false;
    if (!m_HasMiddle) return true;
    const double turn = TurnTo(point);
    return away > 0 && turn >= m_Low && turn <= m_High;
  }

  /// A line beyond it has to pass it.
  void Pass(Point point) {
    const double away = Distance(m_Anchor, point);
    m_Farthest = std::max(m_Farthest, away);
    // All directions pass a point that is as near as this.
    if (away <= m_Distance) return;
    const double half = std::asin(m_Distance / away);
    if (!m_HasMiddle) {
      m_HasMiddle = true;
      m_Middle = DirectionOf(point);
      m_Low = -half;
      m_High = half;
      return;
    }
    const double turn = TurnTo(point);
    m_Low = std::max(m_Low, turn - half);
    m_High = std::min(m_High, turn + half);
  }

 private:
  [[nodiscard]] double DirectionOf(Point point) const {
    return std::atan2(point.y - m_Anchor.y, point.x - m_Anchor.x);
  }
  [[nodiscard]] double TurnTo(Point point) const {
    return std::remainder(DirectionOf(point) - m_Middle, 2 * std::numbers::pi);
  }

  Point m_Anchor;
  double m_Distance;
  double m_Farthest = 0;
  bool m_HasMiddle = false;
  double m_Middle = 0;  // the direction of the first point that is not too near
  double m_Low = 0;     // turns from the middle
  double m_High = 0;
};

}  // namespace

Contour Thinned(const Contour& contour, double distance) {
  Contour thinned{.start = contour.start, .segments = {}, .closed = contour.closed};
  Fan fan(contour.start, distance);
  const Segment* last = nullptr;  // a line that is not yet added
  const auto add = [&](const Segment& segment) {
    thinned.segments.push_back(segment);
    fan = Fan(segment.end, distance);
    last = nullptr;
  };
  for (const Segment& segment : contour.segments) {
    if (last != nullptr && (segment.isCurve || !fan.Reaches(segment.end))) add(*last);
    if (segment.isCurve) {
      add(segment);
    } else {
      fan.Pass(segment.end);
      last = &segment;
    }
  }
  if (last != nullptr) add(*last);
  return thinned;
}

}  // namespace rastrel::cutting
