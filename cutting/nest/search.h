#pragma once

#include <cstddef>
#include <vector>

#include "cutting/nest/layout.h"
#include "cutting/nest/nest.h"
#include "cutting/nest/piece_shape.h"

namespace rastrel::cutting::nest {

/// How far a search for a better layout has come.
struct Search {
  Layout best;
  int layouts = 0;        ///< that were tried
  bool rows = true;       ///< the best one is that the search began with
  bool wasEnded = false;  ///< the options' `goOn` ended it
};

/// Looks for layouts that are better than `search.best`: climbs from the best of some first orders
/// of the pieces, the large ones first, by changing the order a little at a time. It ends after the
/// options' effort, or when their `goOn` says so. The same each time.
void Improve(Search& search, const std::vector<PieceShape>& shapes,
             const std::vector<std::size_t>& shapeOfPiece, const SheetSize& sheet,
             const NestOptions& options);

}  // namespace rastrel::cutting::nest
