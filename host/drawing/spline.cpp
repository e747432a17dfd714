#include "host/drawing/spline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace rastrel::drawing {

namespace {

constexpr int HighestDegree = 15;
constexpr int MaximumHalvings = 8;

// A point times its weight, and the weight.
struct Weighted {
  double x = 0, y = 0, w = 1;
};

CWorldPoint PointOf(const Weighted& point) { return {point.x / point.w, point.y / point.w}; }

// One polynomial piece of the curve, between two knots, by its blossom: the function of `degree`
// parameters that is symmetric and affine in each, and the curve where all are equal.
class Piece {
 public:
  Piece(const Spline& spline, std::size_t knot) : m_Spline(spline), m_Knot(knot) {}

  [[nodiscard]] double Begin() const { return m_Spline.knots[m_Knot]; }
  [[nodiscard]] double End() const { return m_Spline.knots[m_Knot + 1]; }

  // With `second` parameters of `b` and the others of `a`.
  [[nodiscard]] Weighted Blossom(double a, double b, int second) const {
    const auto degree = static_cast<std::size_t>(m_Spline.degree);
    std::array<Weighted, HighestDegree + 1> level{};
    for (std::size_t i = 0; i <= degree; ++i) {
      const std::size_t at = m_Knot - degree + i;
      const double w = m_Spline.weights.empty() ? 1 : m_Spline.weights[at];
      level[i] = {m_Spline.points[at].x * w, m_Spline.points[at].y * w, w};
    }
    for (std::size_t r = 1; r <= degree; ++r) {
      const double t = r <= static_cast<std::size_t>(second) ? b : a;
      for (std::size_t i = 0; i + r <= degree; ++i) {
        const double from = m_Spline.knots[m_Knot - degree + i + r];
        const double to = m_Spline.knots[m_Knot + 1 + i];
        const double part = to > from ? (t - from) / (to - from) : 0;
        level[i] = {level[i].x + (level[i + 1].x - level[i].x) * part,
                    level[i].y + (level[i + 1].y - level[i].y) * part,
                    level[i].w + (level[i + 1].w - level[i].w) * part};
      }
    }
    return level[0];
  }
  [[nodiscard]] CWorldPoint At(double t) const { return PointOf(Blossom(t, t, 0)); }

 private:
  const Spline& m_Spline;
  std::size_t m_Knot;
};

// Degrees 1 to 3 are Bézier curves already.
void AddExactly(const Piece& piece, int degree, PathBuilder& path) {
  std::array<CWorldPoint, 4> b{};
  for (int i = 0; i <= degree; ++i) {
    b[static_cast<std::size_t>(i)] = PointOf(piece.Blossom(piece.Begin(), piece.End(), i));
  }
  if (degree == 1) {
    path.LineTo(b[1]);
  } else if (degree == 2) {
    path.CurveTo({b[0].x + (b[1].x - b[0].x) * 2 / 3, b[0].y + (b[1].y - b[0].y) * 2 / 3},
                 {b[2].x + (b[1].x - b[2].x) * 2 / 3, b[2].y + (b[1].y - b[2].y) * 2 / 3}, b[2]);
  } else {
    path.CurveTo(b[1], b[2], b[3]);
  }
}

// Between two parameters: the curve with the same ends and tangents there, or halves of it.
void AddNearly(const Piece& piece, int degree, double from, double to, double tolerance,
               int halvings, PathBuilder& path) {
  const Weighted a = piece.Blossom(from, to, 0);
  const Weighted nextA = piece.Blossom(from, to, 1);
  const Weighted beforeD = piece.Blossom(from, to, degree - 1);
  const Weighted d = piece.Blossom(from, to, degree);
  const auto handle = [&](const Weighted& end, const Weighted& next) {
    const double reach = degree / 3.0 * next.w / end.w;
    const CWorldPoint p = PointOf(end);
    const CWorldPoint q = PointOf(next);
    return CWorldPoint{p.x + (q.x - p.x) * reach, p.y + (q.y - p.y) * reach};
  };
  const CWorldPoint p0 = PointOf(a);
  const CWorldPoint p1 = handle(a, nextA);
  const CWorldPoint p2 = handle(d, beforeD);
  const CWorldPoint p3 = PointOf(d);
  double error = 0;
  for (const double t : {0.25, 0.5, 0.75}) {
    const double u = 1 - t;
    const CWorldPoint own{
        u * u * u * p0.x + 3 * u * u * t * p1.x + 3 * u * t * t * p2.x + t * t * t * p3.x,
        u * u * u * p0.y + 3 * u * u * t * p1.y + 3 * u * t * t * p2.y + t * t * t * p3.y};
    const CWorldPoint true_ = piece.At(from + (to - from) * t);
    error = std::max(error, std::hypot(own.x - true_.x, own.y - true_.y));
  }
  if (error > tolerance && halvings > 0) {
    const double middle = (from + to) / 2;
    AddNearly(piece, degree, from, middle, tolerance, halvings - 1, path);
    AddNearly(piece, degree, middle, to, tolerance, halvings - 1, path);
  } else {
    path.CurveTo(p1, p2, p3);
  }
}

bool IsSpline(const Spline& spline) {
  if (spline.degree < 1 || spline.degree > HighestDegree) return false;
  const auto degree = static_cast<std::size_t>(spline.degree);
  if (spline.points.size() <= degree) return false;
  if (spline.knots.size() < spline.points.size() + degree + 1) return false;
  if (!spline.weights.empty() && spline.weights.size() < spline.points.size()) return false;
  if (std::ranges::any_of(spline.weights, [](double w) { return !(w > 0); })) return false;
  return std::ranges::is_sorted(spline.knots);
}

}  // namespace

bool AddSpline(const Spline& spline, double tolerance, PathBuilder& path) {
  if (!IsSpline(spline)) return false;
  const auto degree = static_cast<std::size_t>(spline.degree);
  const bool plain = std::ranges::all_of(
      spline.weights, [&](double weight) { return weight == spline.weights.front(); });
  for (std::size_t knot = degree; knot < spline.points.size(); ++knot) {
    const Piece piece(spline, knot);
    if (!(piece.End() > piece.Begin())) continue;
    if (path.IsEmpty()) path.MoveTo(piece.At(piece.Begin()));
    if (plain && spline.degree <= 3) {
      AddExactly(piece, spline.degree, path);
    } else {
      AddNearly(piece, spline.degree, piece.Begin(), piece.End(), tolerance, MaximumHalvings, path);
    }
  }
  return !path.IsEmpty();
}

}  // namespace rastrel::drawing
