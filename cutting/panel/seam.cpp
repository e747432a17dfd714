#include "cutting/panel/seam.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rastrel::cutting::panel {
namespace {

// Two crossings of a curve that are nearer to each other in its parameter are one.
constexpr double SameParameter = 1e-12;

double& CoordinateOf(Point& point, Seam seam) { return seam == Seam::Upright ? point.x : point.y; }
double CoordinateOf(const Point& point, Seam seam) {
  return seam == Seam::Upright ? point.x : point.y;
}

Point Between(Point a, Point b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

double ValueAt(const std::array<double, 4>& p, double t) {
  const double s = 1 - t;
  return s * s * s * p[0] + 3 * s * s * t * p[1] + 3 * s * t * t * p[2] + t * t * t * p[3];
}

// Between two turning points a coordinate only grows or only falls, so that halving finds the one
// crossing to the last digit.
double CrossingBetween(const std::array<double, 4>& p, double low, double high) {
  const bool grows = ValueAt(p, low) < 0;
  for (int i = 0; i < 80; ++i) {
    const double middle = (low + high) / 2;
    ((ValueAt(p, middle) < 0) == grows ? low : high) = middle;
  }
  return (low + high) / 2;
}

// The parameters of the turning points, between 0 and 1 with both of these.
std::vector<double> TurnsOf(const std::array<double, 4>& p) {
  const double a = -p[0] + 3 * p[1] - 3 * p[2] + p[3];
  const double b = 2 * (p[0] - 2 * p[1] + p[2]);
  const double c = p[1] - p[0];
  std::vector<double> turns{0, 1};
  const double root = std::sqrt(b * b - 4 * a * c);
  if (!std::isnan(root)) {
    const double q = -0.5 * (b + std::copysign(root, b));
    for (const double t : {q != 0 ? c / q : -1, a != 0 ? q / a : -1})
      if (t > 0 && t < 1) turns.push_back(t);
  }
  std::ranges::sort(turns);
  return turns;
}

// Where the segment changes sides, from 0 to 1, in order.
std::vector<double> CrossingsOf(Point from, const Segment& segment, Seam seam, double at) {
  const double start = CoordinateOf(from, seam) - at;
  const double end = CoordinateOf(segment.end, seam) - at;
  std::vector<double> crossings;
  if (!segment.isCurve) {
    if ((start < 0) != (end < 0)) crossings.push_back(start / (start - end));
    return crossings;
  }
  const std::array<double, 4> p{start, CoordinateOf(segment.first, seam) - at,
                                CoordinateOf(segment.second, seam) - at, end};
  const std::vector<double> turns = TurnsOf(p);
  for (std::size_t i = 1; i < turns.size(); ++i) {
    if ((ValueAt(p, turns[i - 1]) < 0) == (ValueAt(p, turns[i]) < 0)) continue;
    const double t = CrossingBetween(p, turns[i - 1], turns[i]);
    // A pair of equal ones only touches.
    if (!crossings.empty() && t - crossings.back() < SameParameter) {
      crossings.pop_back();
    } else {
      crossings.push_back(t);
    }
  }
  return crossings;
}

// The part of the segment up to t, and the rest. Their common point is on the line.
struct Halves {
  Segment first;
  Segment rest;
};

Halves Halved(Point from, const Segment& segment, double t, Seam seam, double at) {
  if (!segment.isCurve) {
    Point point = Between(from, segment.end, t);
    CoordinateOf(point, seam) = at;
    return {LineTo(point), segment};
  }
  const Point a = Between(from, segment.first, t);
  const Point b = Between(segment.first, segment.second, t);
  const Point c = Between(segment.second, segment.end, t);
  const Point ab = Between(a, b, t);
  const Point bc = Between(b, c, t);
  Point point = Between(ab, bc, t);
  CoordinateOf(point, seam) = at;
  return {CurveTo(a, ab, point), CurveTo(bc, c, segment.end)};
}

// A run of the contour on one side.
struct Run {
  Contour contour;
  bool isAfter = false;
};

class Splitter {
 public:
  Splitter(const Contour& contour, Seam seam, double at)
      : m_Contour(contour), m_Seam(seam), m_At(at) {}

  // One run, of the whole contour, if it does not cross.
  std::vector<Run> Runs() {
    Begin(m_Contour.start);
    Point from = m_Contour.start;
    for (const Segment& segment : m_Contour.segments) {
      Add(from, segment);
      from = segment.end;
    }
    if (m_Contour.closed && from != m_Contour.start) Add(from, LineTo(m_Contour.start));
    m_Runs.back().isAfter = IsAfter(m_Runs.back().contour);
    return std::move(m_Runs);
  }

 private:
  void Begin(Point point) { m_Runs.push_back({.contour = {.start = point, .segments = {}}}); }

  void Add(Point from, Segment segment) {
    double done = 0;
    for (const double t : CrossingsOf(from, segment, m_Seam, m_At)) {
      const double ofRest = segment.isCurve ? std::clamp((t - done) / (1 - done), 0.0, 1.0) : t;
      const Halves halves = Halved(from, segment, ofRest, m_Seam, m_At);
      AddTo(from, halves.first);
      m_Runs.back().isAfter = IsAfter(m_Runs.back().contour);
      from = halves.first.end;
      Begin(from);
      segment = halves.rest;
      done = t;
    }
    AddTo(from, segment);
  }

  // A crossing at the end of a segment leaves a piece without a length, which is none.
  void AddTo(Point from, const Segment& segment) {
    const bool isPoint = segment.end == from &&
                         (!segment.isCurve || (segment.first == from && segment.second == from));
    if (!isPoint) m_Runs.back().contour.segments.push_back(segment);
  }

  // The side of a run is that of its point that is farthest from the line.
  [[nodiscard]] bool IsAfter(const Contour& contour) const {
    const Box box = BoxOf(contour);
    const double low = m_Seam == Seam::Upright ? box.left : box.bottom;
    const double high = m_Seam == Seam::Upright ? box.right : box.top;
    return high - m_At >= m_At - low;
  }

  const Contour& m_Contour;
  Seam m_Seam;
  double m_At;
  std::vector<Run> m_Runs;
};

// The last run of a closed contour goes on in its first one.
void JoinOverStart(std::vector<Run>& runs) {
  if (runs.size() < 2 || runs.front().isAfter != runs.back().isAfter) return;
  Run joined = std::move(runs.back());
  runs.pop_back();
  const auto& first = runs.front().contour.segments;
  joined.contour.segments.insert(joined.contour.segments.end(), first.begin(), first.end());
  runs.front() = std::move(joined);
}

}  // namespace

Parts SplitAt(const Contour& contour, Seam seam, double at) {
  const Box box = BoxOf(contour);
  const double low = seam == Seam::Upright ? box.left : box.bottom;
  const double high = seam == Seam::Upright ? box.right : box.top;
  if (low >= at) return {.before = {}, .after = {contour}};
  if (high <= at) return {.before = {contour}, .after = {}};
  std::vector<Run> runs = Splitter(contour, seam, at).Runs();
  if (runs.size() == 1) {
    Parts parts;
    (runs[0].isAfter ? parts.after : parts.before).push_back(contour);
    return parts;
  }
  std::erase_if(runs, [](const Run& run) { return run.contour.segments.empty(); });
  if (contour.closed) JoinOverStart(runs);
  Parts parts;
  for (Run& run : runs)
    (run.isAfter ? parts.after : parts.before).push_back(std::move(run.contour));
  return parts;
}

}  // namespace rastrel::cutting::panel
