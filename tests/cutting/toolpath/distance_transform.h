#pragma once

#include <cmath>
#include <limits>
#include <vector>

/// The exact Euclidean distance of every pixel to the nearest one that is set, in pixels: lower
/// envelopes of parabolas, first along columns and then along rows.
namespace rastrel::cutting::test {

/// One line: result[i] is the least of (i - k)² + squares[k].
inline void TransformLine(std::vector<double>& squares) {
  const int count = static_cast<int>(squares.size());
  std::vector<int> vertex(squares.size());
  std::vector<double> border(squares.size() + 1);
  const auto square = [&](int k) { return squares[static_cast<std::size_t>(k)]; };
  const auto crossing = [&](int a, int b) {
    return ((square(b) + 1.0 * b * b) - (square(a) + 1.0 * a * a)) / (2.0 * (b - a));
  };
  int last = -1;
  for (int q = 0; q < count; ++q) {
    if (std::isinf(square(q))) continue;
    while (last >= 0 && last > 0 &&
           crossing(vertex[static_cast<std::size_t>(last)], q) <=
               border[static_cast<std::size_t>(last)])
      --last;
    if (last < 0) {
      last = 0;
      border[0] = -std::numeric_limits<double>::infinity();
    } else {
      const double at = crossing(vertex[static_cast<std::size_t>(last)], q);
      ++last;
      border[static_cast<std::size_t>(last)] = at;
    }
    vertex[static_cast<std::size_t>(last)] = q;
    border[static_cast<std::size_t>(last) + 1] = std::numeric_limits<double>::infinity();
  }
  if (last < 0) return;
  std::vector<double> result(squares.size());
  int k = 0;
  for (int i = 0; i < count; ++i) {
    while (border[static_cast<std::size_t>(k) + 1] < i) ++k;
    const int v = vertex[static_cast<std::size_t>(k)];
    result[static_cast<std::size_t>(i)] = 1.0 * (i - v) * (i - v) + square(v);
  }
  squares = result;
}

inline std::vector<double> DistanceTransform(const std::vector<bool>& isSet, int width,
                                             int height) {
  const auto at = [&](int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  };
  std::vector<double> distances(isSet.size());
  for (std::size_t i = 0; i < isSet.size(); ++i)
    distances[i] = isSet[i] ? 0 : std::numeric_limits<double>::infinity();
  std::vector<double> column(static_cast<std::size_t>(height));
  for (int x = 0; x < width; ++x) {
    for (int y = 0; y < height; ++y) column[static_cast<std::size_t>(y)] = distances[at(x, y)];
    TransformLine(column);
    for (int y = 0; y < height; ++y) distances[at(x, y)] = column[static_cast<std::size_t>(y)];
  }
  std::vector<double> row(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) row[static_cast<std::size_t>(x)] = distances[at(x, y)];
    TransformLine(row);
    for (int x = 0; x < width; ++x)
      distances[at(x, y)] = std::sqrt(row[static_cast<std::size_t>(x)]);
  }
  return distances;
}

}  // namespace rastrel::cutting::test
