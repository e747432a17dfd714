#pragma once

#include <vector>

#include "cutting/job/contour.h"

namespace rastrel::cutting::clean {

struct Spike {
  Point tip;
  double length = 0;  ///< of the shorter of its two sides, millimetres
};

struct WithoutSpikes {
  Contour contour;  ///< the same as before if there is no spike; its points are not moved
  std::vector<Spike> spikes;
};

/// Takes the tips off needles between straight lines: at most `width` wide, and at least four times
/// as long. Curves are not looked at. A contour that is a needle as a whole, so that nothing would
/// be left, stays as it is.
[[nodiscard]] WithoutSpikes RemoveSpikes(const Contour& contour, double width);

}  // namespace rastrel::cutting::clean
