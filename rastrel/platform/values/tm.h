#pragma once

/// Plane matrices, and bounds under them.

#include "rastrel/export.h"
#include "rastrel/platform/values/rect.h"

/// A plane matrix in world units. A new one is the identity.
///
///     x' = a x + c y + tx
///     y' = b x + d y + ty
struct TM {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double tx = 0;
  double ty = 0;
  bool operator==(const TM&) const = default;
};

/// The bounds of a mapped rectangle: the smallest upright one that holds its four corners.
[[nodiscard]] RASTREL_API BOUNDS DBTranslateBounds(const BOUNDS& bounds, const TM& matrix);

/// Sets `matrix` to the one that maps one rectangle onto another by scaling and moving. A source
/// without width or height is not scaled in that direction, only moved, so that the matrix is
/// finite.
RASTREL_API void GetTmFromBounds(const BOUNDS& source, const BOUNDS& target, TM& matrix);
