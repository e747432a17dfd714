#include "host/drawing/image_picture.h"

#include <cairo.h>

#include <algorithm>
#include <utility>

namespace rastrel::drawing {

using graphics::MaximumGraphicPixels;

namespace {

constexpr double PointsPerInch = 72;
constexpr double LowestDpi = 1;
constexpr double HighestDpi = 100'000;
constexpr std::uint64_t MaximumSide = 32'767;  // of the drawing library's pictures

}  // namespace

Resolution Plausible(double x, double y) {
  const auto can = [](double dpi) { return dpi >= LowestDpi && dpi <= HighestDpi; };
  return can(x) && can(y) ? Resolution{x, y} : Resolution();
}

Expected<void> CheckImageSize(std::uint64_t width, std::uint64_t height) {
  if (width == 0 || height == 0) return FailureOf("it has no pixels");
  if (std::max(width, height) <= MaximumSide && width * height <= MaximumGraphicPixels) return {};
  return FailureOf("it has " + std::to_string(width) + " by " + std::to_string(height) +
                   " pixels; " + std::to_string(MaximumGraphicPixels) + ", and " +
                   std::to_string(MaximumSide) + " a side, are the most");
}

void SurfaceEnd::operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }

ImagePicture::ImagePicture(Surface surface, const Resolution& resolution, const char* mimeType)
    : m_Surface(std::move(surface)), m_Resolution(resolution), m_MimeType(mimeType) {
  SetSize(cairo_image_surface_get_width(m_Surface.get()) * PointsPerInch / resolution.x,
          cairo_image_surface_get_height(m_Surface.get()) * PointsPerInch / resolution.y);
}

ImagePicture::~ImagePicture() = default;

std::uint64_t ImagePicture::Pixels() const {
  return static_cast<std::uint64_t>(cairo_image_surface_get_width(m_Surface.get())) *
         static_cast<std::uint64_t>(cairo_image_surface_get_height(m_Surface.get()));
}

Expected<void> ImagePicture::Draw(cairo_t* context) const {
  cairo_save(context);
  cairo_scale(context, PointsPerInch / m_Resolution.x, PointsPerInch / m_Resolution.y);
  cairo_set_source_surface(context, m_Surface.get(), 0, 0);
  if (cairo_surface_get_type(cairo_get_target(context)) == CAIRO_SURFACE_TYPE_IMAGE) {
    // The image ends at its edge, and does not fade out beyond it.
    cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
    cairo_rectangle(context, 0, 0, cairo_image_surface_get_width(m_Surface.get()),
                    cairo_image_surface_get_height(m_Surface.get()));
    cairo_fill(context);
  } else {
    // As it is: a file that carries images whole does not resample it then.
    cairo_paint(context);
  }
  cairo_restore(context);
  return {};
}

}  // namespace rastrel::drawing
