#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <variant>

#include "cutting/picture/cut_picture.h"
#include "cutting/picture/picture_parts.h"

namespace rastrel::cutting {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)>;
using Context = std::unique_ptr<cairo_t, void (*)(cairo_t*)>;

int HexDigit(char digit) { return digit <= '9' ? digit - '0' : (digit | 32) - 'a' + 10; }

void SetColor(cairo_t* context, const std::string& color) {
  const auto part = [&](std::size_t at) {
    return (HexDigit(color[at]) * 16 + HexDigit(color[at + 1])) / 255.0;
  };
  cairo_set_source_rgb(context, part(1), part(3), part(5));
}

void Trace(cairo_t* context, const Contour& contour) {
  cairo_move_to(context, contour.start.x, contour.start.y);
  for (const Segment& one : contour.segments) {
    if (one.isCurve) {
      cairo_curve_to(context, one.first.x, one.first.y, one.second.x, one.second.y, one.end.x,
                     one.end.y);
    } else {
      cairo_line_to(context, one.end.x, one.end.y);
    }
  }
  if (contour.closed) cairo_close_path(context);
}

void Draw(cairo_t* context, const PictureLine& line) {
  SetColor(context, line.color);
  // Contours one by one: an area of many is found by looking at all of them.
  for (const Contour& contour : line.contours) {
    Trace(context, contour);
    if (line.width <= 0) {
      cairo_fill(context);
      continue;
    }
    cairo_set_line_width(context, line.width);
    cairo_set_dash(context, &line.dash, line.dash > 0 ? 1 : 0, 0);
    cairo_stroke(context);
  }
}

void Draw(cairo_t* context, const PictureText& text) {
  cairo_save(context);
  cairo_translate(context, text.at.x, text.at.y);
  cairo_scale(context, 1, -1);
  cairo_set_font_size(context, text.size);
  cairo_move_to(context, 0, 0);
  cairo_text_path(context, text.text.c_str());
  cairo_set_source_rgb(context, 1, 1, 1);
  cairo_set_dash(context, nullptr, 0, 0);
  cairo_set_line_width(context, text.size / 5);
  cairo_stroke_preserve(context);
  SetColor(context, text.color);
  cairo_fill(context);
  cairo_restore(context);
}

cairo_status_t Append(void* text, const unsigned char* bytes, unsigned count) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

Expected<std::string> PngOfParts(const PictureParts& picture, int pixels) {
  if (pixels < SmallestPicture || pixels > LargestPicture) {
    return FailureOf("a picture has " + std::to_string(SmallestPicture) + " to " +
                     std::to_string(LargestPicture) + " pixels along its longer edge");
  }
  const Box& box = picture.box;
  const double scale = pixels / std::max(box.Width(), box.Height());
  const auto edge = [&](double length) {
    return std::clamp(static_cast<int>(std::ceil(length * scale)), 1, pixels);
  };
  const Surface surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, edge(box.Width()), edge(box.Height())),
      cairo_surface_destroy);
  const Context context(cairo_create(surface.get()), cairo_destroy);
  cairo_set_source_rgb(context.get(), 1, 1, 1);
  cairo_paint(context.get());
  cairo_scale(context.get(), scale, -scale);
  cairo_translate(context.get(), -box.left, -box.top);
  cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                         CAIRO_FONT_WEIGHT_NORMAL);
  for (const auto& part : picture.parts) {
    std::visit([&](const auto& one) { Draw(context.get(), one); }, part);
  }
  std::string png;
  cairo_status_t status = cairo_status(context.get());
  if (status == CAIRO_STATUS_SUCCESS) {
    status = cairo_surface_write_to_png_stream(surface.get(), Append, &png);
  }
  if (status != CAIRO_STATUS_SUCCESS) {
    return FailureOf(std::string("the picture can't be drawn: ") + cairo_status_to_string(status));
  }
  return png;
}

Expected<std::string> CutPicturePng(const CutJob& job, int pixels) {
  const auto picture = PartsOfPicture(job);
  if (!picture) return picture.Error();
  return PngOfParts(*picture, pixels);
}

}  // namespace rastrel::cutting
