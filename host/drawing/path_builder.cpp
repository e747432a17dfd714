#include "host/drawing/path_builder.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rastrel::drawing {

using document::SubPath;

namespace {

constexpr double QuarterTurn = 1.5707963267948966;
constexpr double ArcTolerance = 1e-5;  // world units
constexpr int MaximumArcPieces = 4096;

// The largest distance between an arc of this angle and its Bézier curve, for a radius of 1.
double ArcError(double angle) {
  const double quarter = std::abs(angle) / 4;
  const double sine = std::sin(quarter);
  const double cosine = std::cos(quarter);
  return 4.0 / 27 * std::pow(sine, 6) / (cosine * cosine);
}

int PiecesOf(double sweep, double radius) {
  int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / QuarterTurn - 1e-9)));
  while (pieces < MaximumArcPieces && ArcError(sweep / pieces) * radius > ArcTolerance) ++pieces;
  return pieces;
}

}  // namespace

CWorldPoint PointOnEllipse(const CWorldPoint& centre, const CWorldPoint& u, const CWorldPoint& v,
                           double t) {
  return {centre.x + u.x * std::cos(t) + v.x * std::sin(t),
          centre.y + u.y * std::cos(t) + v.y * std::sin(t)};
}

TM Combined(const TM& outer, const TM& inner) {
  return {outer.a * inner.a + outer.c * inner.b,
          outer.b * inner.a + outer.d * inner.b,
          outer.a * inner.c + outer.c * inner.d,
          outer.b * inner.c + outer.d * inner.d,
          outer.a * inner.tx + outer.c * inner.ty + outer.tx,
          outer.b * inner.tx + outer.d * inner.ty + outer.ty};
}

CWorldPoint PathBuilder::Mapped(const CWorldPoint& point) const {
  const TM& m = m_ToWorld;
  return {m.a * point.x + m.c * point.y + m.tx, m.b * point.x + m.d * point.y + m.ty};
}

void PathBuilder::MoveTo(const CWorldPoint& point) {
  m_Path.shape.subPaths.emplace_back().start = Mapped(point);
  m_At = point;
}

void PathBuilder::LineTo(const CWorldPoint& point) {
  if (IsEmpty()) return MoveTo(point);
  m_Path.shape.subPaths.back().segments.push_back(
      {false, {CWorldPoint(), CWorldPoint(), Mapped(point)}});
  ++m_Pieces;
  m_At = point;
}

void PathBuilder::CurveTo(const CWorldPoint& first, const CWorldPoint& second,
                          const CWorldPoint& end) {
  if (IsEmpty()) MoveTo(first);
  m_Path.shape.subPaths.back().segments.push_back(
      {true, {Mapped(first), Mapped(second), Mapped(end)}});
  ++m_Pieces;
  m_At = end;
}

void PathBuilder::ArcTo(const CWorldPoint& centre, const CWorldPoint& u, const CWorldPoint& v,
                        double start, double sweep) {
  const TM& m = m_ToWorld;
  const double scale = std::max(std::hypot(m.a, m.b), std::hypot(m.c, m.d));
  const double radius = std::max(std::hypot(u.x, u.y), std::hypot(v.x, v.y)) * scale;
  // Written so that NaN makes no curve.
  if (!(std::abs(sweep) <= 64 * QuarterTurn) || !std::isfinite(radius)) return;
  const int pieces = PiecesOf(sweep, radius);
  const double step = sweep / pieces;
  const double reach = 4.0 / 3 * std::tan(step / 4);
  const auto tangent = [&](double t) {
    return CWorldPoint{-u.x * std::sin(t) + v.x * std::cos(t),
                       -u.y * std::sin(t) + v.y * std::cos(t)};
  };
  for (int i = 0; i < pieces; ++i) {
    const double from = start + step * i;
    const double to = start + step * (i + 1);
    const CWorldPoint a = PointOnEllipse(centre, u, v, from);
    const CWorldPoint b = PointOnEllipse(centre, u, v, to);
    const CWorldPoint ta = tangent(from);
    const CWorldPoint tb = tangent(to);
    CurveTo({a.x + reach * ta.x, a.y + reach * ta.y}, {b.x - reach * tb.x, b.y - reach * tb.y}, b);
  }
}

void PathBuilder::Close() {
  if (IsEmpty()) return;
  SubPath& run = m_Path.shape.subPaths.back();
  run.closed = true;
  if (run.segments.size() > 1 && !run.segments.back().curve &&
      run.segments.back().points[2] == run.start) {
    run.segments.pop_back();
  }
}

void PathBuilder::CloseIfBack() {
  if (IsEmpty()) return;
  const SubPath& run = m_Path.shape.subPaths.back();
  if (run.segments.size() > 1 && run.segments.back().points[2] == run.start) Close();
}

bool PathBuilder::Finish(PathSink& sink, const std::optional<VectorPath::Rgb>& fill,
                         const std::optional<VectorPath::Rgb>& line, double lineWidth) {
  VectorPath path = std::exchange(m_Path, {});
  m_Pieces = 0;
  std::erase_if(path.shape.subPaths, [](const SubPath& run) { return run.segments.empty(); });
  for (const SubPath& run : path.shape.subPaths) {
    for (const document::PathSegment& segment : run.segments) {
      const CWorldPoint& end = segment.points[2];
      // A measure beyond all numbers is nothing that could be drawn.
      if (!std::isfinite(end.x + end.y + run.start.x + run.start.y)) return true;
    }
  }
  if (path.shape.subPaths.empty()) return static_cast<bool>(sink.Taken());
  path.fill = fill;
  path.line = line;
  path.lineWidth = lineWidth;
  return sink.Take(path);
}

}  // namespace rastrel::drawing
