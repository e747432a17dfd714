#pragma once

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/world.h"

/// Where the frames of a template of the second generation (zml) are on a pane: the template's
/// origin measures a point on the pane, and the placement's origin says which part of the frame is
/// on it. Lengths are world units.
namespace rastrel::imports {

/// The edges of a pane less the template's margins.
[[nodiscard]] CWorldRect GetPaneBoundsInsideMargins(const CWorldRect& pane,
                                                    const CR2_MARGINS& margins);

/// A point on a pane, counted from the corner, side or center of the pane inside its margins that
/// the template's origin names. With a top origin y counts down, with any other up. At origin 9
/// both results count by x, as templates rely on. Any other origin: the point as it is.
[[nodiscard]] CWorldPoint GetPointInPane(const CWorldRect& pane, const CR2_TEMPLATE& plate,
                                         const CWorldPoint& point);

/// Reads the frame whose corner, side or center, by the placement's origin, is on the placement's
/// point. An origin outside 1 to 9 leaves the left and the bottom edge as they were. Each edge is
/// rounded to a single precision number.
void GetFramePosition(const CR2_PLACEMENT& placement, BOUNDS& frame);

/// The size that loaded objects get, in the placement's width and height: a side that the template
/// does not give follows the objects' proportions, and with constrained proportions both sides are
/// scaled by the smaller factor. A side of the objects without length limits nothing.
[[nodiscard]] CR2_PLACEMENT SizedToObjects(const CR2_PLACEMENT& placement, const BOUNDS& objects);

}  // namespace rastrel::imports
