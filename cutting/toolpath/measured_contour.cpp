#include "cutting/toolpath/measured_contour.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace rastrel::cutting {
namespace {

constexpr std::size_t Chords = 64;
constexpr double DirectionStep = 0.01;  // millimetres beside a place, where its direction is taken

Point Mixed(Point a, Point b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

Point PointOn(Point start, const Segment& segment, double t) {
  if (!segment.isCurve) return Mixed(start, segment.end, t);
  const Point a = Mixed(start, segment.first, t);
  const Point b = Mixed(segment.first, segment.second, t);
  const Point c = Mixed(segment.second, segment.end, t);
  return Mixed(Mixed(a, b, t), Mixed(b, c, t), t);
}

// The curve up to t, and the rest of it.
std::array<Segment, 2> SplitCurve(Point start, const Segment& curve, double t) {
  const Point a = Mixed(start, curve.first, t);
  const Point b = Mixed(curve.first, curve.second, t);
  const Point c = Mixed(curve.second, curve.end, t);
  const Point ab = Mixed(a, b, t);
  const Point bc = Mixed(b, c, t);
  const Point middle = Mixed(ab, bc, t);
  return {CurveTo(a, ab, middle), CurveTo(bc, c, curve.end)};
}

Point Direction(Point from, Point to) {
  const double length = Distance(from, to);
  return length > 0 ? Point{(to.x - from.x) / length, (to.y - from.y) / length} : Point{};
}

}  // namespace

MeasuredContour::MeasuredContour(const Contour& contour) : m_contour(contour) {
  if (contour.closed && !contour.segments.empty() && contour.segments.back().end != contour.start)
    m_contour.segments.push_back(LineTo(contour.start));
  double length = 0;
  Point from = contour.start;
  for (const Segment& segment : m_contour.segments) {
    std::vector<double> steps;
    if (segment.isCurve) {
      double within = 0;
      Point last = from;
      for (std::size_t i = 1; i <= Chords; ++i) {
        const Point next = PointOn(from, segment, static_cast<double>(i) / Chords);
        within += Distance(last, next);
        steps.push_back(within);
        last = next;
      }
      length += within;
    } else {
      length += Distance(from, segment.end);
    }
    m_steps.push_back(std::move(steps));
    m_ends.push_back(length);
    from = segment.end;
  }
}

Point MeasuredContour::StartOf(std::size_t segment) const {
  return segment == 0 ? m_contour.start : m_contour.segments[segment - 1].end;
}

std::size_t MeasuredContour::SegmentAt(double length) const {
  const auto found = std::ranges::upper_bound(m_ends, length);
  return std::min(static_cast<std::size_t>(found - m_ends.begin()), m_ends.size() - 1);
}

double MeasuredContour::ParameterAt(std::size_t segment, double length) const {
  const double start = segment == 0 ? 0 : m_ends[segment - 1];
  const double whole = m_ends[segment] - start;
  const double within = std::clamp(length - start, 0.0, whole);
  if (whole <= 0) return 0;
  const std::vector<double>& steps = m_steps[segment];
  if (steps.empty()) return within / whole;
  const auto found = std::ranges::lower_bound(steps, within);
  const auto index = std::min(static_cast<std::size_t>(found - steps.begin()), Chords - 1);
  const double before = index == 0 ? 0 : steps[index - 1];
  const double chord = steps[index] - before;
  const double rest = chord > 0 ? (within - before) / chord : 0;
  return std::clamp((static_cast<double>(index) + rest) / Chords, 0.0, 1.0);
}

Point MeasuredContour::At(double length) const {
  if (m_ends.empty()) return m_contour.start;
  if (m_contour.closed && length > Length()) length -= Length();
  const std::size_t segment = SegmentAt(length);
  return PointOn(StartOf(segment), m_contour.segments[segment], ParameterAt(segment, length));
}

Point MeasuredContour::DirectionAfter(double length) const {
  if (Length() <= 0) return {};
  if (m_contour.closed && length >= Length()) length -= Length();
  return Direction(At(length), At(std::min(length + DirectionStep, Length())));
}

Point MeasuredContour::DirectionBefore(double length) const {
  if (Length() <= 0) return {};
  if (m_contour.closed && length <= 0) length += Length();
  return Direction(At(std::max(length - DirectionStep, 0.0)), At(length));
}

std::vector<double> MeasuredContour::Corners(double degrees) const {
  const double limit = std::cos(degrees * std::numbers::pi / 180);
  std::vector<double> corners;
  const auto look = [&](double length) {
    const Point a = DirectionBefore(length);
    const Point b = DirectionAfter(length);
    if (a.x * b.x + a.y * b.y < limit) corners.push_back(length);
  };
  if (m_contour.closed && Length() > 0) look(0);
  for (std::size_t i = 0; i + 1 < m_ends.size(); ++i) look(m_ends[i]);
  return corners;
}

void MeasuredContour::AddPart(Contour& part, std::size_t segment, double from, double to) const {
  const Segment& whole = m_contour.segments[segment];
  const double begin = segment == 0 ? 0 : m_ends[segment - 1];
  const bool fromStart = from <= begin;
  const bool toEnd = to >= m_ends[segment];
  if (fromStart && toEnd) {
    part.segments.push_back(whole);
    return;
  }
  const Point start = StartOf(segment);
  const double first = fromStart ? 0 : ParameterAt(segment, from);
  const double second = toEnd ? 1 : ParameterAt(segment, to);
  if (second <= first) return;
  if (!whole.isCurve) {
    part.segments.push_back(toEnd ? whole : LineTo(PointOn(start, whole, second)));
    return;
  }
  const Segment rest = first > 0 ? SplitCurve(start, whole, first)[1] : whole;
  const Point restStart = first > 0 ? PointOn(start, whole, first) : start;
  part.segments.push_back(
      second < 1 ? SplitCurve(restStart, rest, (second - first) / (1 - first))[0] : rest);
}

Contour MeasuredContour::Part(double from, double to) const {
  Contour part{.start = At(from), .segments = {}, .closed = false};
  if (m_ends.empty()) return part;
  const double length = Length();
  if (from < length) {
    for (std::size_t i = SegmentAt(from); i < m_ends.size(); ++i) {
      AddPart(part, i, from, to);
      if (m_ends[i] >= to) break;
    }
  }
  if (m_contour.closed && to > length) {
    const double again = std::max(0.0, from - length);
    for (std::size_t i = SegmentAt(again); i < m_ends.size(); ++i) {
      AddPart(part, i, again, to - length);
      if (m_ends[i] >= to - length) break;
    }
  }
  return part;
}

}  // namespace rastrel::cutting
