#pragma once

#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/values/document_values.h"

namespace rastrel::imports {

/// Gives a line style the kind and the width of a stroke in world units:
///
///     stroke                               kind                 width
///     below the smallest normal number     LINESTYLE_NONE       0
///     up to 0x0040000000000000, bitwise    LINESTYLE_HAIRLINE   LineStyleHairline
///     above                                LINESTYLE_WIDTH      the stroke
///
/// LineStyleHairline times 2.54 is still in the second row. The other bits of the style stay.
void SetStroke(LINESTYLE& style, double stroke);

/// The kind of a line style.
[[nodiscard]] inline std::uint32_t LineKind(const LINESTYLE& style) {
  return style.style & std::uint32_t{LINESTYLE_KIND};
}

/// True for a stroke that SetStroke takes for no line.
[[nodiscard]] bool IsNoLine(double stroke);

}  // namespace rastrel::imports
