#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting::clean {

struct OpenEnd {
  Point point;
  std::size_t contour = 0;
  bool isLast = false;    ///< the contour's end, and not its start
  std::size_t group = 0;  ///< only ends of one group are joined
};

struct EndPair {
  std::size_t first = 0;  ///< in the list of ends
  std::size_t second = 0;
  double gap = 0;  ///< millimetres
};

/// Pairs of ends at most `tolerance` apart, each end in one pair at most, the nearest first. Of
/// more than 64 ends in a square of the tolerance, not all partners may be found. Points are
/// usable, and the tolerance is above 0.
[[nodiscard]] std::vector<EndPair> PairEnds(std::span<const OpenEnd> ends, double tolerance);

}  // namespace rastrel::cutting::clean
