#pragma once

#include "host/graphics/vector_path.h"

/// The numbered colors of DXF.
namespace rastrel::graphics {

/// The color that a number of DXF means: 7 is black, on a white ground; so is a number out of
/// range.
[[nodiscard]] VectorPath::Rgb IndexedColor(int index);

/// The number, 1 to 255, of the nearest numbered color; the lowest of several. A component that is
/// no number counts as 0.
[[nodiscard]] int IndexOfColor(const VectorPath::Rgb& color);

}  // namespace rastrel::graphics
