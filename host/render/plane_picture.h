#pragma once

#include "host/render/cairo_objects.h"
#include "host/render/canvas.h"

namespace rastrel::render {

/// Why a plane is not drawn, for the user.
inline constexpr const char* NoMemoryForPlane = "there is no memory to draw a separated plane";

/// A plane as the drawing library takes it, which has a limit on a picture's sides. A larger plane
/// is made smaller by whole factors: a pixel is then the mean of those that became it.
struct PlanePicture {
  CairoSurface surface;  ///< null if there was no memory for it
  int width = 0;         ///< pixels of the surface
  int height = 0;
};

/// The plane's ink as how much it covers: 8 bits of alpha, 255 full ink.
[[nodiscard]] PlanePicture CoverOf(const SeparationPlane& plane);

/// The ink itself where it covers, transparent elsewhere, in at most `maximumPixels` pixels.
[[nodiscard]] PlanePicture InkOf(const SeparationPlane& plane, double maximumPixels);

}  // namespace rastrel::render
