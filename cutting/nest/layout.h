#pragma once

#include <compare>
#include <functional>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "cutting/nest/nest.h"
#include "cutting/nest/piece_shape.h"

/// Layouts of pieces, in micrometres.
namespace rastrel::cutting::nest {

/// One piece of a layout.
struct Placed {
  std::size_t shape = 0;  ///< its place among the shapes
  std::size_t turn = 0;   ///< its place among the shape's turns
  std::size_t sheet = 0;
  ClipperLib::IntPoint at{};  ///< its reference point on the sheet
};

struct SheetSize {
  ClipperLib::cInt width = 0, height = 0, gap = 0;
  bool roll = false;
};

struct Layout {
  std::vector<Placed> pieces;          ///< in the order of `shapeOfPiece`
  std::vector<ClipperLib::cInt> used;  ///< of each sheet, from its left edge

  /// Fewer sheets first, then the shorter sum of used lengths.
  [[nodiscard]] bool IsBetterThan(const Layout& other) const;
};

/// Which turns fit on an empty sheet.
[[nodiscard]] bool Fits(const TurnedShape& shape, const SheetSize& sheet);

/// Boxes stacked in columns, the widest first, each in the first column with room for it. Nothing
/// if a roll's maximum length is too short. Each shape fits on a sheet with one of its turns: the
/// first that fits or, if `narrow`, that with the narrowest box.
[[nodiscard]] std::optional<Layout> RowsOfBoxes(const std::vector<PieceShape>& shapes,
                                                const std::vector<std::size_t>& shapeOfPiece,
                                                const SheetSize& sheet, bool narrow);

/// Places piece after piece as far left as its outline may be, then as far down. Between layouts it
/// keeps the regions that two shapes forbid each other, and one layout, of which another takes over
/// the pieces until the first that differs.
class OutlinePacker {
 public:
  /// Both are referred to. All shapes have the same turns, which divide a circle evenly.
  OutlinePacker(const std::vector<PieceShape>& shapes, const std::vector<std::size_t>& shapeOfPiece,
                const SheetSize& sheet)
      : m_Shapes(shapes), m_ShapeOfPiece(shapeOfPiece), m_Sheet(sheet) {}

  /// A layout of the pieces in this order of their places in `shapeOfPiece`. Nothing if `goOn`
  /// returns false, a roll's maximum length is too short, or the layout becomes longer on a roll
  /// than `longest`.
  [[nodiscard]] std::optional<Layout> Pack(const std::vector<std::size_t>& order,
                                           ClipperLib::cInt longest,
                                           const std::function<bool()>& goOn);

  /// Keeps the layout that Pack returned last for this order.
  void Keep(const std::vector<std::size_t>& order, const Layout& layout);

 private:
  // Of two shapes: the one, its turn within a quarter, the other, and its turn beside the one's.
  using Key = std::tuple<std::size_t, std::size_t, std::size_t, std::size_t>;
  // Of a sheet, a shape and its turn.
  using Spot = std::tuple<std::size_t, std::size_t, std::size_t>;

  [[nodiscard]] ClipperLib::Paths ForbiddenBy(const Placed& standing, std::size_t shape,
                                              std::size_t turn);
  [[nodiscard]] std::optional<Placed> PlaceOn(std::size_t sheet, std::size_t shape);
  [[nodiscard]] std::optional<ClipperLib::IntPoint> LeftmostOn(const Placed& candidate,
                                                               ClipperLib::cInt rightmost);
  void Add(Layout& layout, std::size_t piece, const Placed& placed);

  const std::vector<PieceShape>& m_Shapes;
  const std::vector<std::size_t>& m_ShapeOfPiece;
  SheetSize m_Sheet;
  std::map<Key, ClipperLib::Paths> m_Forbidden;
  std::vector<std::size_t> m_KeptOrder;
  std::vector<Placed> m_KeptPieces;               // in the places of `shapeOfPiece`
  std::vector<Placed> m_Placed;                   // so far, of the layout that is made
  std::map<Spot, ClipperLib::cInt> m_LeftLimits;  // no free place is further left
};

}  // namespace rastrel::cutting::nest
