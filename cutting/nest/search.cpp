#include "cutting/nest/search.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <optional>
#include <random>
#include <utility>

namespace rastrel::cutting::nest {
namespace {

// Orders of the pieces to begin with: large ones first, in three senses.
std::vector<std::vector<std::size_t>> FirstOrders(const std::vector<PieceShape>& shapes,
                                                  const std::vector<std::size_t>& shapeOfPiece) {
  const auto byArea = [](const PieceShape& shape) { return shape.area; };
  const auto byHeight = [](const PieceShape& shape) {
    return static_cast<double>(shape.turns[0].top - shape.turns[0].bottom);
  };
  const auto bySide = [](const PieceShape& shape) {
    return static_cast<double>(std::max(shape.turns[0].top - shape.turns[0].bottom,
                                        shape.turns[0].right - shape.turns[0].left));
  };
  std::vector<std::vector<std::size_t>> orders;
  const auto add = [&](const auto& sizeOf) {
    std::vector<std::size_t> order(shapeOfPiece.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
      return sizeOf(shapes[shapeOfPiece[a]]) > sizeOf(shapes[shapeOfPiece[b]]);
    });
    orders.push_back(std::move(order));
  };
  add(byArea);
  add(bySide);
  add(byHeight);
  return orders;
}

double LengthOf(const Layout& layout) {
  ClipperLib::cInt length = 0;
  for (const ClipperLib::cInt used : layout.used) length += used;
  return static_cast<double>(length) / UnitsPerMillimetre;
}

// The pieces whose ends are the furthest along the roll or the sheets.
std::vector<std::size_t> LastPieces(const Layout& layout, const std::vector<PieceShape>& shapes) {
  std::vector<std::size_t> pieces(layout.pieces.size());
  std::iota(pieces.begin(), pieces.end(), std::size_t{0});
  const auto end = [&](std::size_t piece) {
    const Placed& placed = layout.pieces[piece];
    return std::pair(placed.sheet, placed.at.X + shapes[placed.shape].turns[placed.turn].right);
  };
  std::ranges::stable_sort(pieces, std::ranges::greater{}, end);
  pieces.resize(std::max<std::size_t>(1, pieces.size() / 10));
  return pieces;
}

// Changes an order: two pieces change places, or one of those at the layout's end comes earlier.
// The generator's numbers are the same everywhere, which the standard library's distributions are
// not.
void Change(std::vector<std::size_t>& order, const std::vector<std::size_t>& last,
            std::mt19937_64& random) {
  if (random() % 2 == 0) {
    std::swap(order[random() % order.size()], order[random() % order.size()]);
    return;
  }
  const auto from = std::ranges::find(order, last[random() % last.size()]);
  const auto to =
      order.begin() +
      static_cast<std::ptrdiff_t>(random() % static_cast<std::uint64_t>(from - order.begin() + 1));
  std::rotate(to, from, from + 1);
}

}  // namespace

void Improve(Search& search, const std::vector<PieceShape>& shapes,
             const std::vector<std::size_t>& shapeOfPiece, const SheetSize& sheet,
             const NestOptions& options) {
  const auto orders = FirstOrders(shapes, shapeOfPiece);
  OutlinePacker packer(shapes, shapeOfPiece, sheet);
  std::mt19937_64 random(1);
  std::vector<std::size_t> bestOrder = orders.front();
  std::vector<std::size_t> last;
  std::optional<Layout> bestOfOrders;
  const auto goOn = [&] {
    const NestProgress progress{search.layouts, LengthOf(search.best)};
    search.wasEnded = search.wasEnded || (options.goOn && !options.goOn(progress));
    return !search.wasEnded;
  };
  for (int i = 0; i < options.effort; ++i) {
    const bool isFirst = static_cast<std::size_t>(i) < orders.size();
    std::vector<std::size_t> order = isFirst ? orders[static_cast<std::size_t>(i)] : bestOrder;
    if (!isFirst && bestOfOrders) Change(order, last, random);
    const ClipperLib::cInt longest = bestOfOrders ? bestOfOrders->used.front() : sheet.width;
    std::optional<Layout> layout = packer.Pack(order, longest, goOn);
    if (search.wasEnded) return;
    ++search.layouts;
    if (!layout || (bestOfOrders && bestOfOrders->IsBetterThan(*layout))) continue;
    packer.Keep(order, *layout);
    bestOrder = std::move(order);
    last = LastPieces(*layout, shapes);
    if (layout->IsBetterThan(search.best)) {
      search.best = *layout;
      search.rows = false;
    }
    bestOfOrders = std::move(layout);
  }
}

}  // namespace rastrel::cutting::nest
