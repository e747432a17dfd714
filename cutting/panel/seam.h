#pragma once

#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting::panel {

enum class Seam {
  Upright,  ///< at an x
  Level     ///< at a y
};

/// The parts of a contour on the two sides of a line. A contour that does not cross it is whole on
/// one side; one that only touches it, and one on it, is above or to the right if no point is
/// below.
struct Parts {
  std::vector<Contour> before;  ///< to the left, or below
  std::vector<Contour> after;   ///< to the right, or above
};

/// The ends of the parts are on the line exactly. Parts are open, unless the contour is whole, and
/// run as the contour does; of a closed one the part over its start is in one piece.
[[nodiscard]] Parts SplitAt(const Contour& contour, Seam seam, double at);

}  // namespace rastrel::cutting::panel
