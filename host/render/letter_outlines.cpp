#include "host/render/letter_outlines.h"

#include <cairo.h>

#include <algorithm>

#include "host/render/cairo_objects.h"
#include "host/text/text_layout.h"

namespace rastrel::render {

namespace {

// The drawing library keeps 1/256 of a unit, so letters are drawn large there; it keeps 24 bits of
// units, and the font library has letters of at most some ten thousand.
constexpr double LargestScale = 64;
constexpr double MaximumRun = 1e6;
constexpr double LargestLetter = 6400;

Point Mapped(const TM& place, double x, double y) {
  return {place.a * x + place.c * y + place.tx, place.b * x + place.d * y + place.ty};
}

}  // namespace

Outline LetterOutlines(const text::TextLayout& layout, std::size_t run, const TM& place) {
  const text::PlacedRun& placed = layout.Runs()[run];
  const double scale = std::min({LargestScale, MaximumRun / std::max(placed.width, 1e-6),
                                 LargestLetter / std::max(placed.size, 1e-6)});
  const CairoSurface surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr));
  const CairoContext context(cairo_create(surface.get()));
  cairo_scale(context.get(), scale, scale);
  layout.AddOutlines(context.get(), run);
  const CairoPath path(cairo_copy_path(context.get()));
  Outline outline;
  for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
    const cairo_path_data_t* data = &path->data[i];
    const auto point = [&](int number) {
      return Mapped(place, data[number].point.x, data[number].point.y);
    };
    switch (data->header.type) {
      case CAIRO_PATH_MOVE_TO: outline.MoveTo(point(1)); break;
      case CAIRO_PATH_LINE_TO: outline.LineTo(point(1)); break;
      case CAIRO_PATH_CURVE_TO: outline.CurveTo(point(1), point(2), point(3)); break;
      case CAIRO_PATH_CLOSE_PATH: outline.Close(); break;
    }
  }
  return outline;
}

}  // namespace rastrel::render
