#include "host/render/cairo_objects.h"

#include <cairo-pdf.h>
#include <cairo.h>

namespace rastrel::render {

namespace {

cairo_status_t AppendToString(void* target, const unsigned char* bytes, unsigned count) {
  // NOLINTNEXTLINE: the library's bytes are unsigned
  static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

void CairoEnd::operator()(cairo_t* context) const { cairo_destroy(context); }
void CairoEnd::operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
void CairoEnd::operator()(cairo_path* path) const { cairo_path_destroy(path); }

CairoSurface PdfSurface(std::string& bytes, double width, double height) {
  return CairoSurface(cairo_pdf_surface_create_for_stream(AppendToString, &bytes, width, height));
}

std::string PngBytes(cairo_surface_t* surface) {
  std::string png;
  if (cairo_surface_write_to_png_stream(surface, AppendToString, &png) != CAIRO_STATUS_SUCCESS)
    return {};
  return png;
}

}  // namespace rastrel::render
