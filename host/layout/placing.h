#pragma once

#include <cstdint>

#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

/// Places on a plate by origin codes. Lengths are world units (centimetres, y upward), angles
/// degrees, counter-clockwise. An origin is a code from 1 to 9, rows from the top, each from the
/// left: 1 top left, 5 the center, 9 bottom right.
namespace rastrel::layout {

/// Longer lengths and larger coordinates than this, in either direction, are refused: they are
/// beyond every sign, and their sums would not be exact.
inline constexpr double LargestLength = 1e6;

/// False for infinite numbers, for none, and for those beyond LargestLength.
[[nodiscard]] bool IsLength(double value);

/// The point of a frame that is `x` and `y` inward from its origin: rightward and upward, but
/// leftward from a right corner or side, and downward from a top one.
[[nodiscard]] CWorldPoint PointFrom(const CWorldRect& frame, std::int32_t origin, double x,
                                    double y);

/// The corner, side or center of a box.
[[nodiscard]] CWorldPoint PartOf(const BOUNDS& box, std::int32_t origin);

/// The turn about a point. Quarter turns are exact.
[[nodiscard]] TM TurnAbout(const CWorldPoint& center, double degrees);

/// The matrix that maps by `first` and then by `second`.
[[nodiscard]] TM Composed(const TM& first, const TM& second);

/// Where a graphic is on a frame. A width or height that is 0 is none: both give the graphic's own
/// size, and one alone is proportional to the other.
struct Placement {
  std::int32_t origin = 5;  ///< of the frame, and the part of the graphic that is at the point
  double x = 0;             ///< inward from the frame's origin
  double y = 0;
  double width = 0;
  double height = 0;
  double rotation = 0;  ///< about the point
};

/// False if a value is no length, no angle, or a negative size.
[[nodiscard]] bool IsPlacement(const Placement& placement);

/// The matrix that puts a graphic with these bounds in its place on a frame.
[[nodiscard]] TM TmOf(const Placement& placement, const CWorldRect& frame, const BOUNDS& bounds);

/// The frame that the content of a plate is laid out in before it is turned about the plate's
/// center: as large as the plate, with its sides exchanged for a quarter turn in either direction.
[[nodiscard]] CWorldRect ContentFrame(const CWorldRect& plate, double degrees);

/// The largest frame of the proportions and with the center of the plate that stays inside of the
/// plate when it is turned; at quarter turns the ContentFrame.
[[nodiscard]] CWorldRect FrameInside(const CWorldRect& plate, double degrees);

}  // namespace rastrel::layout
