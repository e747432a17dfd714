#pragma once

#include <cstddef>
#include <vector>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// The outside of a corner, where the tool's way is wider than the outline.
enum class Corners {
  Round,   ///< an arc: everywhere half a kerf from the outline
  Square,  ///< cut off at half a kerf from the corner
  Pointed  ///< a corner again; where that is beyond 4 times half a kerf from it, cut off
};

struct KerfReport {
  struct Place {
    std::size_t path = 0;     ///< index in the job
    std::size_t contour = 0;  ///< index in the path, before the offset
    Point place{};            ///< middle of its box
    double area = 0;          ///< square millimetres, never negative
  };
  std::size_t moved = 0;     ///< closed contours that were offset
  std::size_t open = 0;      ///< open ones with a kerf, which have no waste side: as before
  std::size_t offSheet = 0;  ///< ones that are on no sheet (IsOnAnySheet): as before
  /// Ones that cross themselves too often, or have too many details within the kerf, to be offset
  /// in reasonable time (tangle.h): as before.
  std::size_t tangled = 0;
  std::vector<Place> vanished{};  ///< holes narrower than the kerf: gone
  /// The sum of the squares of the corners of the contours that were offset. The first contour that
  /// makes it more than MaximumWork is as before, and so are all after it: the job has not got its
  /// kerf.
  double work = 0;
  static constexpr double MaximumWork = 1e10;  ///< one contour of 100,000 corners, or 100 of 10,000

  [[nodiscard]] bool IsTooMuch() const { return work > MaximumWork; }
};

/// Moves each closed contour of a path with a tool by half of its settings' kerf into the waste: an
/// outline outward and a hole inward, by its nesting among the contours of the same operation.
/// `tolerance`, at least 0.001 mm, is how far the result may be off the true offset; round corners
/// of a kerf above 10 mm may be off by a thousandth of its half.
///
/// Lines of the outline are thinned first, by at most a tenth of the tolerance (thinning.h).
///
/// The result is made of straight lines, for the offset of a cubic curve is none; a contour runs as
/// it did and begins near its old start. A hole may fall into several, and an outline that comes
/// round to itself gets a hole. A contour that crosses itself is the outline of all that it winds
/// round. Settings::kerf is 0 afterwards, so that a job that is read back is not offset twice.
/// Any thread.
[[nodiscard]] CutJob OffsetByKerf(CutJob job, Corners corners, double tolerance,
                                  KerfReport& report);

}  // namespace rastrel::cutting
