#include "cutting/nest/layout.h"

#include <algorithm>
#include <numeric>

#include "cutting/nest/forbidden.h"

namespace rastrel::cutting::nest {
namespace {

using ClipperLib::cInt;
using ClipperLib::IntPoint;
using ClipperLib::Path;
using ClipperLib::Paths;

// Some hundred bytes each.
constexpr std::size_t MaximumKept = 100'000;

cInt WidthOf(const TurnedShape& shape) { return shape.right - shape.left; }
cInt HeightOf(const TurnedShape& shape) { return shape.top - shape.bottom; }

struct Column {
  std::size_t sheet;
  cInt left;
  cInt width;
  cInt filled;  // upward
};

// Where the last column of each sheet ends is in `used`.
class Columns {
 public:
  explicit Columns(const SheetSize& sheet) : m_Sheet(sheet) {}

  std::optional<Placed> Place(const TurnedShape& shape) {
    for (Column& column : m_Columns)
      if (HeightOf(shape) <= m_Sheet.height - column.filled && WidthOf(shape) <= column.width)
        return Add(column, shape);
    const std::optional<Column> added = NewColumn(WidthOf(shape));
    if (!added) return std::nullopt;
    m_Columns.push_back(*added);
    return Add(m_Columns.back(), shape);
  }

  std::vector<cInt> used{};

 private:
  std::optional<Column> NewColumn(cInt width) {
    for (std::size_t sheet = 0; sheet < used.size(); ++sheet) {
      const cInt left = used[sheet] + m_Sheet.gap;
      if (left + width > m_Sheet.width) continue;
      used[sheet] = left + width;
      return Column{sheet, left, width, 0};
    }
    if (m_Sheet.roll && !used.empty()) return std::nullopt;
    used.push_back(width);
    return Column{used.size() - 1, 0, width, 0};
  }

  Placed Add(Column& column, const TurnedShape& shape) const {
    const IntPoint at(column.left - shape.left, column.filled - shape.bottom);
    column.filled += HeightOf(shape) + m_Sheet.gap;
    return {.sheet = column.sheet, .at = at};
  }

  SheetSize m_Sheet;
  std::vector<Column> m_Columns;
};

std::size_t TurnForRows(const PieceShape& shape, const SheetSize& sheet, bool narrow) {
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < shape.turns.size(); ++i) {
    if (!Fits(shape.turns[i], sheet)) continue;
    if (!best || (narrow && WidthOf(shape.turns[i]) < WidthOf(shape.turns[*best]))) best = i;
  }
  return best.value_or(0);
}

constexpr std::size_t QuartersInCircle = 4;

bool IsInside(IntPoint point, const SheetSize& sheet, const TurnedShape& shape) {
  return point.X + shape.left >= 0 && point.X + shape.right <= sheet.width &&
         point.Y + shape.bottom >= 0 && point.Y + shape.top <= sheet.height;
}

// A quarter of a circle for each of the turns, which leaves whole numbers whole.
Path Quartered(const Path& path, std::size_t quarters, IntPoint by) {
  Path turned;
  turned.reserve(path.size());
  for (IntPoint point : path) {
    for (std::size_t i = 0; i < quarters; ++i) point = {-point.Y, point.X};
    turned.emplace_back(point.X + by.X, point.Y + by.Y);
  }
  return turned;
}

}  // namespace

bool Fits(const TurnedShape& shape, const SheetSize& sheet) {
  return WidthOf(shape) <= sheet.width && HeightOf(shape) <= sheet.height;
}

bool Layout::IsBetterThan(const Layout& other) const {
  const auto length = [](const Layout& layout) {
    return std::accumulate(layout.used.begin(), layout.used.end(), cInt{0});
  };
  if (used.size() != other.used.size()) return used.size() < other.used.size();
  return length(*this) < length(other);
}

std::optional<Layout> RowsOfBoxes(const std::vector<PieceShape>& shapes,
                                  const std::vector<std::size_t>& shapeOfPiece,
                                  const SheetSize& sheet, bool narrow) {
  std::vector<std::size_t> turns;
  for (const PieceShape& shape : shapes) turns.push_back(TurnForRows(shape, sheet, narrow));
  const auto turned = [&](std::size_t piece) -> const TurnedShape& {
    return shapes[shapeOfPiece[piece]].turns[turns[shapeOfPiece[piece]]];
  };
  std::vector<std::size_t> order(shapeOfPiece.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(
      order, [&](std::size_t a, std::size_t b) { return WidthOf(turned(a)) > WidthOf(turned(b)); });
  Columns columns(sheet);
  Layout layout{.pieces = std::vector<Placed>(order.size()), .used = {}};
  for (const std::size_t piece : order) {
    auto placed = columns.Place(turned(piece));
    if (!placed) return std::nullopt;
    placed->shape = shapeOfPiece[piece];
    placed->turn = turns[placed->shape];
    layout.pieces[piece] = *placed;
  }
  layout.used = std::move(columns.used);
  return layout;
}

// Two pieces that are turned by a quarter forbid each other the turned region, and the one forbids
// the other the mirror image, about a point, of the region that the other forbids the one.
Paths OutlinePacker::ForbiddenBy(const Placed& standing, std::size_t shape, std::size_t turn) {
  const bool isSwapped = standing.shape > shape;
  const std::size_t first = isSwapped ? shape : standing.shape;
  const std::size_t second = isSwapped ? standing.shape : shape;
  const std::size_t firstTurn = isSwapped ? turn : standing.turn;
  const std::size_t secondTurn = isSwapped ? standing.turn : turn;
  const std::size_t turns = m_Shapes[first].turns.size();
  const std::size_t ofQuarter = turns % QuartersInCircle == 0 ? turns / QuartersInCircle : turns;
  const std::size_t quarters = firstTurn / ofQuarter;
  const Key key{first, firstTurn % ofQuarter, second,
                (secondTurn + turns - quarters * ofQuarter) % turns};
  auto found = m_Forbidden.find(key);
  if (found == m_Forbidden.end()) {
    if (m_Forbidden.size() >= MaximumKept) m_Forbidden.clear();
    found = m_Forbidden
                .emplace(key, Forbidden(m_Shapes[first].turns[std::get<1>(key)],
                                        m_Shapes[second].turns[std::get<3>(key)]))
                .first;
  }
  Paths region;
  region.reserve(found->second.size());
  for (const Path& path : found->second)
    region.push_back(
        Quartered(path, quarters + (isSwapped ? QuartersInCircle / 2 : 0), standing.at));
  return region;
}

std::optional<IntPoint> OutlinePacker::LeftmostOn(const Placed& candidate, cInt rightmost) {
  const TurnedShape& shape = m_Shapes[candidate.shape].turns[candidate.turn];
  if (!Fits(shape, m_Sheet)) return std::nullopt;
  cInt first = -shape.left;
  const Spot spot{candidate.sheet, candidate.shape, candidate.turn};
  if (const auto limit = m_LeftLimits.find(spot); limit != m_LeftLimits.end())
    first = std::max(first, limit->second);
  const cInt last = std::min(m_Sheet.width - shape.right, rightmost);
  if (first > last) return std::nullopt;
  // A unit more on each side, or a piece that is as large as the sheet would have no area to be in.
  const cInt left = first - 1;
  const cInt right = last + 1;
  const cInt bottom = -shape.bottom - 1;
  const cInt top = m_Sheet.height - shape.top + 1;
  ClipperLib::Clipper clipper;
  clipper.AddPath({{left, bottom}, {right, bottom}, {right, top}, {left, top}},
                  ClipperLib::ptSubject, true);
  for (const Placed& other : m_Placed) {
    if (other.sheet != candidate.sheet) continue;
    for (Path& path : ForbiddenBy(other, candidate.shape, candidate.turn)) {
      const auto [lowest, highest] = std::ranges::minmax_element(path, {}, &IntPoint::X);
      if (lowest->X < right && highest->X > left) clipper.AddPath(path, ClipperLib::ptClip, true);
    }
  }
  Paths allowed;
  clipper.Execute(ClipperLib::ctDifference, allowed, ClipperLib::pftNonZero,
                  ClipperLib::pftNonZero);
  std::optional<IntPoint> best;
  for (const Path& path : allowed) {
    for (IntPoint point : path) {
      point.X = std::clamp(point.X, left + 1, right - 1);
      point.Y = std::clamp(point.Y, bottom + 1, top - 1);
      if (!best || point.X < best->X || (point.X == best->X && point.Y < best->Y)) best = point;
    }
  }
  if (!best || !IsInside(*best, m_Sheet, shape)) return std::nullopt;
  m_LeftLimits[spot] = best->X;
  return best;
}

std::optional<Placed> OutlinePacker::PlaceOn(std::size_t sheet, std::size_t shape) {
  std::optional<Placed> best;
  cInt bestEnd = m_Sheet.width + 1;
  for (std::size_t turn = 0; turn < m_Shapes[shape].turns.size(); ++turn) {
    Placed candidate{.shape = shape, .turn = turn, .sheet = sheet};
    const cInt right = m_Shapes[shape].turns[turn].right;
    const auto at = LeftmostOn(candidate, bestEnd - right - 1);
    if (!at) continue;
    candidate.at = *at;
    best = candidate;
    bestEnd = at->X + right;
  }
  return best;
}

void OutlinePacker::Add(Layout& layout, std::size_t piece, const Placed& placed) {
  if (placed.sheet == layout.used.size()) layout.used.push_back(0);
  cInt& used = layout.used[placed.sheet];
  used = std::max(used, placed.at.X + m_Shapes[placed.shape].turns[placed.turn].right);
  layout.pieces[piece] = placed;
  m_Placed.push_back(placed);
}

void OutlinePacker::Keep(const std::vector<std::size_t>& order, const Layout& layout) {
  m_KeptOrder = order;
  m_KeptPieces = layout.pieces;
}

std::optional<Layout> OutlinePacker::Pack(const std::vector<std::size_t>& order, cInt longest,
                                          const std::function<bool()>& goOn) {
  Layout layout{.pieces = std::vector<Placed>(m_ShapeOfPiece.size()), .used = {}};
  m_Placed.clear();
  m_LeftLimits.clear();
  std::size_t next = 0;
  for (; next < m_KeptOrder.size() && m_KeptOrder[next] == order[next]; ++next)
    Add(layout, order[next], m_KeptPieces[order[next]]);
  for (; next < order.size(); ++next) {
    if (!goOn()) return std::nullopt;
    const std::size_t piece = order[next];
    std::optional<Placed> found;
    for (std::size_t sheet = 0; !found && sheet <= layout.used.size(); ++sheet) {
      if (m_Sheet.roll && sheet > 0) return std::nullopt;
      found = PlaceOn(sheet, m_ShapeOfPiece[piece]);
      // None of its turns fits on an empty sheet.
      if (!found && sheet == layout.used.size()) return std::nullopt;
    }
    Add(layout, piece, *found);
    if (m_Sheet.roll && layout.used.front() > longest) return std::nullopt;
  }
  return layout;
}

}  // namespace rastrel::cutting::nest
