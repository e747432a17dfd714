#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

// The drawing library's surface, whose header only sources include.
typedef struct _cairo_surface cairo_surface_t;

namespace rastrel::graphics {
class Picture;
}

namespace rastrel::render {

/// A surface of pixels as a PNG file that names its resolution. Empty if there is no memory for it.
/// The same pixels make the same bytes.
[[nodiscard]] std::string PngOfSurface(cairo_surface_t* surface, double dpi);

/// A placed file as pixels on a transparent ground, at 300 dpi, or fewer where that would be more
/// than 16 million pixels.
[[nodiscard]] Expected<std::string> PngOfPicture(const graphics::Picture& picture);

}  // namespace rastrel::render
