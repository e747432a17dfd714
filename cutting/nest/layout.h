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

/// Places piece after piece as far left as its outline may be, then as far down. It keeps the
/// regions that two shapes forbid each other between layouts.
class OutlinePacker {
 public:
  /// Both are referred to.
  OutlinePacker(const std::vector<PieceShape>& shapes, const std::vector<std::size_t>& shapeOfPiece,
                const SheetSize& sheet)
      : m_Shapes(shapes), m_ShapeOfPiece(shapeOfPiece), m_Sheet(sheet) {}

  /// A layout of the pieces in this order of their places in `shapeOfPiece`. Nothing if `goOn`
  /// returns false, or a roll's maximum length is too short.
  [[nodiscard]] std::optional<Layout> Pack(const std::vector<std::size_t>& order,
                                           const std::function<bool()>& goOn);

 private:
  using Key = std::tuple<std::size_t, std::size_t, std::size_t, std::size_t>;

  [[nodiscard]] const ClipperLib::Paths& ForbiddenBy(const Placed& standing, std::size_t shape,
                                                     std::size_t turn);
  [[nodiscard]] std::optional<Placed> PlaceOn(std::size_t sheet, std::size_t shape,
                                              const std::vector<Placed>& placed);
  [[nodiscard]] std::optional<ClipperLib::IntPoint> LeftmostOn(const Placed& candidate,
                                                               const std::vector<Placed>& placed);

  const std::vector<PieceShape>& m_Shapes;
  const std::vector<std::size_t>& m_ShapeOfPiece;
  SheetSize m_Sheet;
  std::map<Key, ClipperLib::Paths> m_Forbidden;
};

}  // namespace rastrel::cutting::nest
