#pragma once

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

/// Where the frames of a template of the first generation (cr2) are on a pane. Lengths are world
/// units unless a comment says inches. Templates are drawn for the asymmetries of
/// the table: they must stay.
namespace rastrel::imports {

/// The placement of a frame or of a cut line in world units: the template's left and top margin are
/// part of its offset, whatever its origin. Both arguments are in inches.
[[nodiscard]] CR2_PLACEMENT EffectivePlacement(const CR2_PLACEMENT& placement,
                                               const CR2_MARGINS& templateMargins);

/// The lower left corner of a frame of the placement's size on a pane with those edges:
///
///     origin   left                  bottom
///     1 2 3    from the left edge,   down from the top edge
///     4 5      for 2, 5 and 8 less   down from the top edge to the frame's middle
///     6        half the width;       up from the bottom edge to the frame's middle
///     7 8 9    3, 6, 9 from the      up from the bottom edge
///              right edge
///
/// Any other origin: x and y themselves.
[[nodiscard]] CWorldPoint FrameCorner(const CWorldRect& pane, const CR2_PLACEMENT& placement);

/// The frame of an effective placement whose origin is not 0. Each edge has been rounded to a
/// single precision number, since documents compare them exactly.
[[nodiscard]] BOUNDS GetFramePosition(const CWorldRect& pane, const CR2_PLACEMENT& placement);

/// The matrix that scales loaded objects to an effective placement whose origin is not 0 and moves
/// them there. A side without length is not scaled. A constrained placement takes the smaller of
/// the two factors by magnitude for both.
[[nodiscard]] TM CreateTmForPlacement(const CWorldRect& pane, const CR2_PLACEMENT& placement,
                                      const BOUNDS& objects);

}  // namespace rastrel::imports
