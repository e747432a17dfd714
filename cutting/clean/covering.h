#pragma once

#include <cstdint>
#include <vector>

#include "cutting/clean/survey.h"

namespace rastrel::cutting::clean {

struct Covering {
  std::uint32_t contour = 0;  ///< of the flat job
  std::size_t path = 0;       ///< that hides it
};

struct Coverings {
  std::vector<Covering> found;  ///< by contour, one of each
  bool complete = true;         ///< false if the work was ended by its limit
};

/// Contours of filled paths that lie within the area of one path that is filled later, for the same
/// operation. A path with an open contour covers nothing.
[[nodiscard]] Coverings FindCoverings(const Survey& survey);

}  // namespace rastrel::cutting::clean
