#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting {

/// One contour of a tour, and where the tool comes to it.
struct TourStop {
  std::size_t contour = 0;
  /// Of a closed one the segment's end that it begins at: 0 its start, 1 the end of the first
  /// segment, and so on.
  std::size_t start = 0;
  bool reversed = false;  ///< an open one is gone from its end to its start
};

/// The places where a closed contour may begin: its start and the ends of its segments, without a
/// last one that lies on the start.
[[nodiscard]] std::size_t StartCount(const Contour& contour);
[[nodiscard]] Point StartAt(const Contour& contour, std::size_t index);

/// Every contour once, in an order with a short way between them that begins at `from`: the nearest
/// next one, bettered by 2-opt among near neighbors with a limit of steps, n log n. All coordinates
/// are finite.
[[nodiscard]] std::vector<TourStop> FindTour(std::span<const Contour* const> contours, Point from);

/// Lets every closed contour begin, and every open one run, as its neighbors in the tour want it.
/// Their order stays.
void ChooseStarts(std::span<const Contour* const> contours, Point from,
                  std::vector<TourStop>& tour);

}  // namespace rastrel::cutting
