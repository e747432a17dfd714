#include "host/render/letter_outlines.h"

#include <cairo.h>

#include <algorithm>

#include "host/render/cairo_objects.h"
#include "host/text/arc_layout.h"
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

// A context that takes letters as paths, in a scale that keeps their shapes.
class PathContext {
 public:
  PathContext(double width, double size)
      : m_Surface(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr)),
        m_Context(cairo_create(m_Surface.get())) {
    const double scale = std::min(
        {LargestScale, MaximumRun / std::max(width, 1e-6), LargestLetter / std::max(size, 1e-6)});
    cairo_scale(m_Context.get(), scale, scale);
  }
  [[nodiscard]] cairo_t* Get() const { return m_Context.get(); }
  // Adds the path to an outline, and begins another.
  void MoveTo(Outline& outline, const TM& place) const;

 private:
  CairoSurface m_Surface;
  CairoContext m_Context;
};

void PathContext::MoveTo(Outline& outline, const TM& place) const {
  const CairoPath path(cairo_copy_path(m_Context.get()));
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
  cairo_new_path(m_Context.get());
}

}  // namespace

Outline LetterOutlines(const text::TextLayout& layout, std::size_t run, const TM& place) {
  const text::PlacedRun& placed = layout.Runs()[run];
  const PathContext context(placed.width, placed.size);
  layout.AddOutlines(context.Get(), run);
  Outline outline;
  context.MoveTo(outline, place);
  return outline;
}

Outline LetterOutlines(const text::ArcLayout& layout, const TM& place) {
  const text::PlacedRun& run = layout.Run();
  const PathContext context(run.size, run.size);
  Outline outline;
  for (std::size_t i = 0; i < layout.Letters().size(); ++i) {
    layout.AddOutline(context.Get(), i);
    context.MoveTo(outline, Composed(layout.PlaceOf(i), place));
  }
  return outline;
}

TM Composed(const TM& first, const TM& second) {
  const Point origin = Mapped(second, first.tx, first.ty);
  return {second.a * first.a + second.c * first.b,
          second.b * first.a + second.d * first.b,
          second.a * first.c + second.c * first.d,
          second.b * first.c + second.d * first.d,
          origin.x,
          origin.y};
}

}  // namespace rastrel::render
