#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// A page's picture as whether its pixels are printed. A view: it owns nothing. Row 0 is the page's
/// top, and the picture's lower left corner is the page's.
struct Coverage {
  std::span<const std::uint8_t> pixels;  ///< one a pixel; 0 is unprinted. `width * height` of them
  std::size_t width = 0;
  std::size_t height = 0;
  double pixel = 0;  ///< width and height of one, millimetres, above 0

  /// False beyond the picture.
  [[nodiscard]] bool IsPrinted(Point place) const;
};

/// A run of a cut over which too little is printed.
struct BleedGap {
  std::size_t path = 0;     ///< index in the job
  std::size_t contour = 0;  ///< index in the path
  Point from;               ///< where it begins, as the contour runs
  Point to;
  double length = 0;  ///< millimetres; 0 for a single place
  /// The least that is printed beyond the cut, millimetres; negative where the print ends so far
  /// before it.
  double reach = 0;
};

/// Where the print does not reach `bleed` millimetres over a closed path that is cut through, to
/// the side of the waste (kerf.h). A run along which nothing is printed within `bleed` on the
/// piece's side either is an unprinted edge and no gap. Places are looked at every pixel, or at
/// MaximumBleedPlaces in all if those are fewer, with rays of up to a thousand steps; so a reach is
/// known to a pixel, and one that lacks no more is none that lacks. Runs that are nearer to each
/// other than the bleed are one. Without pixels, and for a bleed
/// that is not above 0, the result is empty. Any thread.
[[nodiscard]] std::vector<BleedGap> CheckBleed(const CutJob& job, const Coverage& coverage,
                                               double bleed);

constexpr double MaximumBleedPlaces = 200'000;

}  // namespace rastrel::cutting
