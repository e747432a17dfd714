#include "cutting/nest/layout.h"

#include <algorithm>
#include <numeric>

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

bool IsInside(IntPoint point, const SheetSize& sheet, const TurnedShape& shape) {
  return point.X + shape.left >= 0 && point.X + shape.right <= sheet.width &&
         point.Y + shape.bottom >= 0 && point.Y + shape.top <= sheet.height;
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

const Paths& OutlinePacker::ForbiddenBy(const Placed& standing, std::size_t shape,
                                        std::size_t turn) {
  const Key key{standing.shape, standing.turn, shape, turn};
  if (const auto found = m_Forbidden.find(key); found != m_Forbidden.end()) return found->second;
  if (m_Forbidden.size() >= MaximumKept) m_Forbidden.clear();
  return m_Forbidden
      .emplace(key, Forbidden(m_Shapes[standing.shape].turns[standing.turn],
                              m_Shapes[shape].turns[turn]))
      .first->second;
}

std::optional<IntPoint> OutlinePacker::LeftmostOn(const Placed& candidate,
                                                  const std::vector<Placed>& placed) {
  const TurnedShape& shape = m_Shapes[candidate.shape].turns[candidate.turn];
  if (!Fits(shape, m_Sheet)) return std::nullopt;
  // A unit more on each side, or a piece that is as large as the sheet would have no area to be in.
  const cInt left = -shape.left - 1;
  const cInt right = m_Sheet.width - shape.right + 1;
  const cInt bottom = -shape.bottom - 1;
  const cInt top = m_Sheet.height - shape.top + 1;
  ClipperLib::Clipper clipper;
  clipper.AddPath({{left, bottom}, {right, bottom}, {right, top}, {left, top}},
                  ClipperLib::ptSubject, true);
  for (const Placed& other : placed) {
    if (other.sheet != candidate.sheet) continue;
    Paths region = ForbiddenBy(other, candidate.shape, candidate.turn);
    for (Path& path : region)
      for (IntPoint& point : path) point = {point.X + other.at.X, point.Y + other.at.Y};
    clipper.AddPaths(region, ClipperLib::ptClip, true);
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
  return best && IsInside(*best, m_Sheet, shape) ? best : std::nullopt;
}

std::optional<Placed> OutlinePacker::PlaceOn(std::size_t sheet, std::size_t shape,
                                             const std::vector<Placed>& placed) {
  std::optional<Placed> best;
  cInt bestEnd = 0;
  for (std::size_t turn = 0; turn < m_Shapes[shape].turns.size(); ++turn) {
    Placed candidate{.shape = shape, .turn = turn, .sheet = sheet};
    const auto at = LeftmostOn(candidate, placed);
    if (!at) continue;
    candidate.at = *at;
    const cInt end = at->X + m_Shapes[shape].turns[turn].right;
    if (best && end >= bestEnd) continue;
    best = candidate;
    bestEnd = end;
  }
  return best;
}

std::optional<Layout> OutlinePacker::Pack(const std::vector<std::size_t>& order,
                                          const std::function<bool()>& goOn) {
  Layout layout{.pieces = std::vector<Placed>(m_ShapeOfPiece.size()), .used = {}};
  std::vector<Placed> placed;
  for (const std::size_t piece : order) {
    if (!goOn()) return std::nullopt;
    std::optional<Placed> found;
    for (std::size_t sheet = 0; !found && sheet <= layout.used.size(); ++sheet) {
      if (m_Sheet.roll && sheet > 0) return std::nullopt;
      found = PlaceOn(sheet, m_ShapeOfPiece[piece], placed);
      // None of its turns fits on an empty sheet.
      if (!found && sheet == layout.used.size()) return std::nullopt;
    }
    if (found->sheet == layout.used.size()) layout.used.push_back(0);
    cInt& used = layout.used[found->sheet];
    used = std::max(used, found->at.X + m_Shapes[found->shape].turns[found->turn].right);
    layout.pieces[piece] = *found;
    placed.push_back(*found);
  }
  return layout;
}

}  // namespace rastrel::cutting::nest
