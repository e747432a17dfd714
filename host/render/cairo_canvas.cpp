#include "host/render/cairo_canvas.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>

#include "host/graphics/picture.h"
#include "host/render/cairo_objects.h"
#include "host/render/letter_outlines.h"
#include "host/render/plane_picture.h"
#include "host/text/arc_layout.h"
#include "host/text/text_layout.h"

namespace rastrel::render {

namespace {

// Cairo keeps device coordinates in 24 bits before the binary point; half of that leaves room for
// the width of lines.
constexpr double FarthestUnit = 4'000'000;

void SetColor(cairo_t* context, const Color& color) {
  cairo_set_source_rgb(context, color.red, color.green, color.blue);
}

void AddPath(cairo_t* context, const Outline& outline) {
  const Point* point = outline.points.data();
  for (const Outline::Step step : outline.steps) {
    switch (step) {
      case Outline::Step::Move:
        cairo_move_to(context, point[0].x, point[0].y);
        point += 1;
        break;
      case Outline::Step::Line:
        cairo_line_to(context, point[0].x, point[0].y);
        point += 1;
        break;
      case Outline::Step::Curve:
        cairo_curve_to(context, point[0].x, point[0].y, point[1].x, point[1].y, point[2].x,
                       point[2].y);
        point += 3;
        break;
      case Outline::Step::Close: cairo_close_path(context); break;
    }
  }
}

cairo_matrix_t MatrixOf(const TM& place) {
  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, place.a, place.b, place.c, place.d, place.tx, place.ty);
  return matrix;
}

// The pixels as the drawing library has them: 4 bytes each, blue first on this machine.
Expected<CairoSurface> SurfaceOf(const document::BitmapPixels& pixels) {
  constexpr int maximumSide = 32'767;  // of the drawing library
  const auto count =
      static_cast<std::uint64_t>(pixels.width) * static_cast<std::uint64_t>(pixels.height);
  if (count > graphics::MaximumGraphicPixels ||
      std::max(pixels.width, pixels.height) > maximumSide) {
    return FailureOf("it has " + std::to_string(pixels.width) + " by " +
                     std::to_string(pixels.height) + " pixels; " +
                     std::to_string(graphics::MaximumGraphicPixels) + ", and " +
                     std::to_string(maximumSide) + " a side, are the most");
  }
  CairoSurface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels.width, pixels.height));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
    return FailureOf("there is not enough memory for it");
  }
  unsigned char* const bytes = cairo_image_surface_get_data(surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
  for (int y = 0; y < pixels.height; ++y) {
    const std::span<const std::byte> row = pixels.Row(y);
    unsigned char* const target = bytes + static_cast<std::size_t>(y) * stride;
    for (std::size_t x = 0; std::cmp_less(x, pixels.width); ++x) {
      for (std::size_t part = 0; part < 3; ++part) {
        target[x * 4 + part] = static_cast<unsigned char>(row[pixels.gray ? x : x * 3 + part]);
      }
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

}  // namespace

CairoCanvas::CairoCanvas(cairo_t* context, const Device& device, bool outlines)
    : m_Context(context),
      m_Device(device),
      m_Farthest(FarthestUnit / device.unitsPerPoint),
      m_Outlines(outlines) {
  cairo_set_fill_rule(context, CAIRO_FILL_RULE_EVEN_ODD);
}

void CairoCanvas::Stroke(const Pen& pen) {
  SetColor(m_Context, pen.color);
  cairo_set_line_width(m_Context, pen.width > 0 ? pen.width : m_Device.thinnest);
  const std::span<const double> lengths = LengthsOf(pen.dashes);
  cairo_set_dash(m_Context, lengths.data(), static_cast<int>(lengths.size()), 0);
  cairo_stroke(m_Context);
}

void CairoCanvas::DrawOutline(const Outline& outline, const std::optional<Color>& inside,
                              const std::optional<Pen>& pen) {
  AddPath(m_Context, outline);
  if (inside) {
    SetColor(m_Context, *inside);
    const bool nonZero = outline.fillRule == document::FillRule::NonZero;
    if (nonZero) cairo_set_fill_rule(m_Context, CAIRO_FILL_RULE_WINDING);
    cairo_fill_preserve(m_Context);
    if (nonZero) cairo_set_fill_rule(m_Context, CAIRO_FILL_RULE_EVEN_ODD);
  }
  if (pen) Stroke(*pen);
  cairo_new_path(m_Context);
}

void CairoCanvas::DrawCircle(Point centre, double radius, const Pen& pen) {
  constexpr double fullTurn = 6.283185307179586;
  cairo_new_sub_path(m_Context);
  cairo_arc(m_Context, centre.x, centre.y, radius, 0, fullTurn);
  cairo_close_path(m_Context);
  Stroke(pen);
}

bool CairoCanvas::IsLargeLetter(double size, const TM& place) const {
  const double stretch = std::max(std::hypot(place.a, place.b), std::hypot(place.c, place.d));
  return size * stretch * m_Device.unitsPerPoint > m_Device.largestLetter;
}

void CairoCanvas::FillLetters(const Outline& letters) {
  AddPath(m_Context, letters);
  cairo_set_fill_rule(m_Context, CAIRO_FILL_RULE_WINDING);
  cairo_fill(m_Context);
  cairo_set_fill_rule(m_Context, CAIRO_FILL_RULE_EVEN_ODD);
}

void CairoCanvas::DrawText(const text::TextLayout& layout, std::size_t run, const Color& color,
                           const TM& place) {
  SetColor(m_Context, color);
  if (m_Outlines || IsLargeLetter(layout.Runs()[run].size, place)) {
    FillLetters(LetterOutlines(layout, run, place));
    return;
  }
  const cairo_matrix_t matrix = MatrixOf(place);
  cairo_save(m_Context);
  cairo_transform(m_Context, &matrix);
  layout.DrawRun(m_Context, run);
  cairo_restore(m_Context);
}

void CairoCanvas::DrawArcText(const text::ArcLayout& layout, const Color& color, const TM& place) {
  SetColor(m_Context, color);
  if (m_Outlines || IsLargeLetter(layout.Run().size, place)) {
    FillLetters(LetterOutlines(layout, place));
    return;
  }
  for (std::size_t i = 0; i < layout.Letters().size(); ++i) {
    const cairo_matrix_t matrix = MatrixOf(Composed(layout.PlaceOf(i), place));
    cairo_save(m_Context);
    cairo_transform(m_Context, &matrix);
    layout.DrawLetter(m_Context, i);
    cairo_restore(m_Context);
  }
}

// Multiplied by a color within a mask, light becomes that which a layer of ink lets through:
// 1 - cover (1 - color).
Expected<void> CairoCanvas::DrawPlane(const SeparationPlane& plane, const TM& place) {
  const PlanePicture picture = CoverOf(plane);
  if (!picture.surface) return FailureOf(NoMemoryForPlane);
  const cairo_matrix_t matrix = MatrixOf(place);
  cairo_save(m_Context);
  cairo_transform(m_Context, &matrix);
  cairo_scale(m_Context, static_cast<double>(plane.width) / picture.width,
              static_cast<double>(plane.height) / picture.height);
  cairo_rectangle(m_Context, 0, 0, picture.width, picture.height);
  cairo_clip(m_Context);
  cairo_set_operator(m_Context, CAIRO_OPERATOR_MULTIPLY);
  SetColor(m_Context, plane.ink);
  cairo_mask_surface(m_Context, picture.surface.get(), 0, 0);
  cairo_restore(m_Context);
  return {};
}

Expected<void> CairoCanvas::DrawPicture(const graphics::Picture& picture, const TM& place) {
  const cairo_matrix_t matrix = MatrixOf(place);
  cairo_save(m_Context);
  cairo_transform(m_Context, &matrix);
  cairo_rectangle(m_Context, 0, 0, picture.Width(), picture.Height());
  cairo_clip(m_Context);
  Expected<void> drawn = picture.Draw(m_Context);
  cairo_restore(m_Context);
  return drawn;
}

Expected<void> CairoCanvas::DrawBitmap(const document::BitmapPixels& pixels, const TM& place) {
  const auto surface = SurfaceOf(pixels);
  if (!surface) return surface.Error();
  const cairo_matrix_t matrix = MatrixOf(place);
  cairo_save(m_Context);
  cairo_transform(m_Context, &matrix);
  cairo_rectangle(m_Context, 0, 0, pixels.width, pixels.height);
  cairo_clip(m_Context);
  cairo_set_source_surface(m_Context, surface->get(), 0, 0);
  if (cairo_surface_get_type(cairo_get_target(m_Context)) == CAIRO_SURFACE_TYPE_IMAGE) {
    // The image ends at its edge, and does not fade out beyond it.
    cairo_pattern_set_extend(cairo_get_source(m_Context), CAIRO_EXTEND_PAD);
    cairo_rectangle(m_Context, 0, 0, pixels.width, pixels.height);
    cairo_fill(m_Context);
  } else {
    // As it is: a file that carries images whole does not resample it then.
    cairo_paint(m_Context);
  }
  cairo_restore(m_Context);
  return {};
}

}  // namespace rastrel::render
