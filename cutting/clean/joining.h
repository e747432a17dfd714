#pragma once

#include <cstddef>
#include <vector>

#include "cutting/clean/ends.h"

namespace rastrel::cutting::clean {

/// A contour on the way along a chain.
struct ChainLink {
  std::size_t contour = 0;
  bool reversed = false;
};

struct Chain {
  std::vector<ChainLink> links;
  bool closes = false;  ///< its end meets its start
};

/// The chains that pairs of ends make, each contour in one at most; contours that meet no other are
/// in none. `ends` holds the start and the end of a contour one after the other.
[[nodiscard]] std::vector<Chain> ChainsOf(const std::vector<OpenEnd>& ends,
                                          const std::vector<EndPair>& pairs);

}  // namespace rastrel::cutting::clean
