#include "cutting/clean/spikes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace rastrel::cutting::clean {
namespace {

constexpr double Slenderness = 4;

// The length of the needle from `a` to its tip and back to `b`; 0 if it is none.
double NeedleLength(Point a, Point tip, Point b, double width) {
  const Point u{a.x - tip.x, a.y - tip.y};
  const Point v{b.x - tip.x, b.y - tip.y};
  const double first = std::hypot(u.x, u.y);
  const double second = std::hypot(v.x, v.y);
  const double length = std::min(first, second);
  if (!(length >= Slenderness * width) || !(u.x * v.x + u.y * v.y > 0)) return 0;
  const double across = std::abs(u.x * v.y - u.y * v.x) / std::max(first, second);
  return across <= width ? length : 0;
}

class Blunting {
 public:
  Blunting(const Contour& contour, double width) : m_Width(width) {
    m_Contour = {.start = contour.start, .segments = {}, .closed = contour.closed};
    for (const Segment& segment : contour.segments) Add(segment);
    m_HasLineBack =
        contour.closed && !contour.segments.empty() && contour.segments.back().end != contour.start;
    if (m_HasLineBack) Add(LineTo(contour.start));
    if (contour.closed) BluntStart();
  }

  [[nodiscard]] bool IsGone() const {
    return m_Contour.segments.size() < (m_Contour.closed ? 3U : 1U) &&
           std::ranges::none_of(m_Contour.segments, &Segment::isCurve);
  }

  Contour TakeContour() {
    if (m_HasLineBack && m_Contour.segments.back().end == m_Contour.start &&
        !m_Contour.segments.back().isCurve)
      m_Contour.segments.pop_back();
    return std::move(m_Contour);
  }

  std::vector<Spike> spikes;

 private:
  [[nodiscard]] Point Before(std::size_t segment) const {
    return segment == 0 ? m_Contour.start : m_Contour.segments[segment - 1].end;
  }

  void Record(Point tip, double length, Point base) {
    // A needle of several lines a side comes off piece by piece.
    if (!spikes.empty() && Distance(m_Base, tip) <= m_Width)
      spikes.back().length += length;
    else
      spikes.push_back({tip, length});
    m_Base = base;
  }

  void Add(const Segment& added) {
    std::vector<Segment>& segments = m_Contour.segments;
    Segment segment = added;
    while (!segment.isCurve && !segments.empty() && !segments.back().isCurve) {
      const Point tip = segments.back().end;
      const Point from = Before(segments.size() - 1);
      const double length = NeedleLength(from, tip, segment.end, m_Width);
      if (length == 0) break;
      Record(tip, length, Distance(from, tip) < Distance(segment.end, tip) ? from : segment.end);
      segments.pop_back();
      if (segment.end == from) return;
    }
    segments.push_back(segment);
  }

  // The start of a closed contour is a corner like all others.
  void BluntStart() {
    std::vector<Segment>& segments = m_Contour.segments;
    while (segments.size() > 2 && !segments.back().isCurve && !segments.front().isCurve) {
      const Point from = Before(segments.size() - 1);
      const Point to = segments.front().end;
      const Point tip = m_Contour.start;
      const double length = NeedleLength(from, tip, to, m_Width);
      if (length == 0) return;
      Record(tip, length, Distance(from, tip) < Distance(to, tip) ? from : to);
      segments.pop_back();
      m_Contour.start = from;
      if (from == to) segments.erase(segments.begin());
    }
  }

  Contour m_Contour;
  double m_Width;
  bool m_HasLineBack = false;
  Point m_Base;
};

}  // namespace

WithoutSpikes RemoveSpikes(const Contour& contour, double width) {
  Blunting blunting(contour, width);
  if (blunting.spikes.empty() || blunting.IsGone()) return {.contour = contour, .spikes = {}};
  std::vector<Spike> spikes = std::move(blunting.spikes);
  return {.contour = blunting.TakeContour(), .spikes = std::move(spikes)};
}

}  // namespace rastrel::cutting::clean
