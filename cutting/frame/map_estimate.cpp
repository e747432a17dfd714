#include "cutting/frame/map_estimate.h"

#include <cmath>
#include <numbers>

#include "cutting/frame/least_squares.h"

namespace rastrel::cutting {
namespace {

constexpr int MaximumRounds = 20;

// Points around their middle, at a mean distance of sqrt 2: so that the columns of the equations
// are of one size, whatever the unit and the place.
struct Normalized {
  std::vector<Point> points;
  Point middle;
  double scale = 1;

  // From the plane of the points to the normalized one.
  [[nodiscard]] FrameMap Map() const {
    return {{scale, 0, -scale * middle.x, 0, scale, -scale * middle.y, 0, 0, 1}};
  }
  [[nodiscard]] FrameMap Back() const {
    return {{1 / scale, 0, middle.x, 0, 1 / scale, middle.y, 0, 0, 1}};
  }
};

std::optional<Normalized> Normalize(const std::vector<Point>& points) {
  Normalized normalized;
  const auto count = static_cast<double>(points.size());
  for (const Point point : points) {
    normalized.middle.x += point.x / count;
    normalized.middle.y += point.y / count;
  }
  double distance = 0;
  for (const Point point : points) distance += Distance(point, normalized.middle) / count;
  if (!(distance > 0) || !std::isfinite(distance)) return std::nullopt;
  normalized.scale = std::numbers::sqrt2 / distance;
  for (const Point point : points)
    normalized.points.push_back({(point.x - normalized.middle.x) * normalized.scale,
                                 (point.y - normalized.middle.y) * normalized.scale});
  return normalized;
}

// Two rows for each pair: how x' and y' depend on the map's unknowns.
std::optional<FrameMap> SimilarMap(const std::vector<Point>& from, const std::vector<Point>& to) {
  Matrix rows(2 * from.size(), 4);
  std::vector<double> images(2 * from.size());
  for (std::size_t i = 0; i < from.size(); ++i) {
    rows.At(2 * i, 0) = from[i].x;
    rows.At(2 * i, 1) = -from[i].y;
    rows.At(2 * i, 2) = 1;
    rows.At(2 * i + 1, 0) = from[i].y;
    rows.At(2 * i + 1, 1) = from[i].x;
    rows.At(2 * i + 1, 3) = 1;
    images[2 * i] = to[i].x;
    images[2 * i + 1] = to[i].y;
  }
  const auto s = LeastSquares(std::move(rows), std::move(images));
  if (!s) return std::nullopt;
  return FrameMap{{(*s)[0], -(*s)[1], (*s)[2], (*s)[1], (*s)[0], (*s)[3], 0, 0, 1}};
}

std::optional<FrameMap> AffineMap(const std::vector<Point>& from, const std::vector<Point>& to) {
  Matrix rows(from.size(), 3);
  std::vector<double> x(from.size());
  std::vector<double> y(from.size());
  for (std::size_t i = 0; i < from.size(); ++i) {
    rows.At(i, 0) = from[i].x;
    rows.At(i, 1) = from[i].y;
    rows.At(i, 2) = 1;
    x[i] = to[i].x;
    y[i] = to[i].y;
  }
  const auto s = LeastSquares(rows, std::move(x));
  const auto t = LeastSquares(std::move(rows), std::move(y));
  if (!s || !t) return std::nullopt;
  return FrameMap{{(*s)[0], (*s)[1], (*s)[2], (*t)[0], (*t)[1], (*t)[2], 0, 0, 1}};
}

// The rows of x' w = m0 x + m1 y + m2 and y' w = m3 x + m4 y + m5, with m8 = 1: the weight at the
// middle of the points, which is never 0 where all are in sight. Each row is divided by `weight`.
void FillProjectiveRows(Matrix& rows, std::size_t i, Point from, Point to, double weight) {
  const double x = from.x / weight;
  const double y = from.y / weight;
  const std::size_t r = 2 * i;
  rows.At(r, 0) = x;
  rows.At(r, 1) = y;
  rows.At(r, 2) = 1 / weight;
  rows.At(r, 6) = -to.x * x;
  rows.At(r, 7) = -to.x * y;
  rows.At(r + 1, 3) = x;
  rows.At(r + 1, 4) = y;
  rows.At(r + 1, 5) = 1 / weight;
  rows.At(r + 1, 6) = -to.y * x;
  rows.At(r + 1, 7) = -to.y * y;
}

// As m8 is 1, the images are the right sides.
std::optional<FrameMap> DirectProjectiveMap(const std::vector<Point>& from,
                                            const std::vector<Point>& to) {
  Matrix rows(2 * from.size(), 8);
  std::vector<double> images(2 * from.size());
  for (std::size_t i = 0; i < from.size(); ++i) {
    FillProjectiveRows(rows, i, from[i], to[i], 1);
    images[2 * i] = to[i].x;
    images[2 * i + 1] = to[i].y;
  }
  // Three of four points on a line make a map that sends the plane to a line.
  const auto s = LeastSquares(std::move(rows), std::move(images), 1e-6);
  if (!s) return std::nullopt;
  FrameMap map;
  for (std::size_t k = 0; k < 8; ++k) map.m[k] = (*s)[k];
  map.m[8] = 1;
  return map;
}

double SquaresOf(const FrameMap& map, const std::vector<Point>& from,
                 const std::vector<Point>& to) {
  double sum = 0;
  for (const double residual : ResidualsOf(map, from, to)) sum += residual * residual;
  return sum;
}

// One step of Gauss and Newton toward the least sum of squared distances, of which the direct
// solution only weighs each by its own w.
std::optional<FrameMap> Improved(const FrameMap& map, const std::vector<Point>& from,
                                 const std::vector<Point>& to) {
  Matrix rows(2 * from.size(), 8);
  std::vector<double> misses(2 * from.size());
  for (std::size_t i = 0; i < from.size(); ++i) {
    const Point image = map.Apply(from[i]);
    FillProjectiveRows(rows, i, from[i], image, map.Weight(from[i]));
    misses[2 * i] = to[i].x - image.x;
    misses[2 * i + 1] = to[i].y - image.y;
  }
  const auto step = LeastSquares(std::move(rows), std::move(misses));
  if (!step) return std::nullopt;
  FrameMap improved = map;
  for (std::size_t k = 0; k < 8; ++k) improved.m[k] += (*step)[k];
  return improved;
}

std::optional<FrameMap> ProjectiveMap(const std::vector<Point>& from,
                                      const std::vector<Point>& to) {
  auto map = DirectProjectiveMap(from, to);
  if (!map) return std::nullopt;
  double squares = SquaresOf(*map, from, to);
  for (int round = 0; round < MaximumRounds; ++round) {
    const auto improved = Improved(*map, from, to);
    if (!improved) break;
    const double fewer = SquaresOf(*improved, from, to);
    if (!(fewer < squares * (1 - 1e-9))) break;
    map = improved;
    squares = fewer;
  }
  return map;
}

}  // namespace

std::optional<FrameMap> EstimatedMap(MapKind kind, const std::vector<Point>& from,
                                     const std::vector<Point>& to) {
  const auto source = Normalize(from);
  const auto target = Normalize(to);
  if (!source || !target) return std::nullopt;
  std::optional<FrameMap> map;
  switch (kind) {
    case MapKind::Similar: map = SimilarMap(source->points, target->points); break;
    case MapKind::Affine: map = AffineMap(source->points, target->points); break;
    case MapKind::Projective: map = ProjectiveMap(source->points, target->points); break;
  }
  if (!map) return std::nullopt;
  FrameMap whole = Chained(Chained(source->Map(), *map), target->Back());
  // Exact zeros, by which an affine map is known.
  if (kind != MapKind::Projective) whole.m[6] = whole.m[7] = 0;
  return whole;
}

std::vector<double> ResidualsOf(const FrameMap& map, const std::vector<Point>& from,
                                const std::vector<Point>& to) {
  std::vector<double> residuals;
  residuals.reserve(from.size());
  for (std::size_t i = 0; i < from.size(); ++i)
    residuals.push_back(Distance(map.Apply(from[i]), to[i]));
  return residuals;
}

}  // namespace rastrel::cutting
