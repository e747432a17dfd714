#include "cutting/nest/forbidden.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace rastrel::cutting::nest {
namespace {

using ClipperLib::cInt;
using ClipperLib::IntPoint;
using ClipperLib::Path;
using ClipperLib::Paths;

Paths Outer(const Paths& paths) {
  Paths outer;
  for (const Path& path : paths)
    if (ClipperLib::Orientation(path)) outer.push_back(path);
  return outer;
}

std::size_t LowestOf(const Path& path) {
  const auto lower = [](IntPoint a, IntPoint b) { return a.Y < b.Y || (a.Y == b.Y && a.X < b.X); };
  return static_cast<std::size_t>(std::ranges::min_element(path, lower) - path.begin());
}

// The edges of both in the order of their directions.
Path ConvexSum(const Path& a, const Path& b) {
  const std::size_t firstA = LowestOf(a);
  const std::size_t firstB = LowestOf(b);
  Path sum;
  sum.reserve(a.size() + b.size());
  for (std::size_t i = 0, j = 0; i < a.size() || j < b.size();) {
    const IntPoint fromA = a[(firstA + i) % a.size()];
    const IntPoint toA = a[(firstA + i + 1) % a.size()];
    const IntPoint fromB = b[(firstB + j) % b.size()];
    const IntPoint toB = b[(firstB + j + 1) % b.size()];
    sum.emplace_back(fromA.X + fromB.X, fromA.Y + fromB.Y);
    const cInt turn = (toA.X - fromA.X) * (toB.Y - fromB.Y) - (toA.Y - fromA.Y) * (toB.X - fromB.X);
    const bool takeA = j == b.size() || (i < a.size() && turn >= 0);
    const bool takeB = i == a.size() || (j < b.size() && turn <= 0);
    if (takeA) ++i;
    if (takeB) ++j;
  }
  return sum;
}

// The convex outline swept along each edge, and the outline itself: far fewer polygons to unite
// than a quadrangle for each pair of edges.
Paths SumWithConvex(const Path& path, const Path& convex) {
  Paths sums;
  for (std::size_t i = 0; i < path.size(); ++i)
    sums.push_back(ConvexSum({path[i], path[(i + 1) % path.size()]}, convex));
  sums.push_back(path);
  for (IntPoint& point : sums.back())
    point = {point.X + convex.front().X, point.Y + convex.front().Y};
  ClipperLib::SimplifyPolygons(sums, ClipperLib::pftNonZero);
  return Outer(sums);
}

Paths SumOf(const Path& a, bool aIsConvex, const Path& b, bool bIsConvex) {
  if (aIsConvex && bIsConvex) return {ConvexSum(a, b)};
  if (aIsConvex) return SumWithConvex(b, a);
  if (bIsConvex) return SumWithConvex(a, b);
  Paths sum;
  ClipperLib::MinkowskiSum(b, a, sum, true);
  return Outer(sum);
}

}  // namespace

Paths Forbidden(const TurnedShape& standing, const TurnedShape& moving) {
  Paths forbidden;
  for (std::size_t i = 0; i < moving.outlines.size(); ++i) {
    Path turned = moving.outlines[i];
    for (IntPoint& point : turned) point = {-point.X, -point.Y};
    for (std::size_t j = 0; j < standing.outlines.size(); ++j) {
      for (Path& path : SumOf(standing.outlines[j], standing.convex[j], turned, moving.convex[i]))
        forbidden.push_back(std::move(path));
    }
  }
  return forbidden;
}

}  // namespace rastrel::cutting::nest
