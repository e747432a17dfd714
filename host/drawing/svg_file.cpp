#include <librsvg/rsvg.h>

#include <memory>
#include <utility>

#include "host/drawing/glib_objects.h"
#include "host/drawing/picture_formats.h"

/// SVG files as pictures.
namespace rastrel::drawing {

namespace {

constexpr double PixelsPerInch = 96;
constexpr double PointsPerPixel = 72 / PixelsPerInch;

using Handle = std::unique_ptr<RsvgHandle, GlibEnd>;

// The picture's part of the drawing, in px: from its origin as large as its width and height or its
// view box say, else all of it.
RsvgRectangle PageOf(RsvgHandle* handle) {
  RsvgRectangle size{};
  if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &size.width, &size.height) != FALSE) {
    return size;
  }
  gboolean hasViewBox = FALSE;
  RsvgRectangle box{};
  rsvg_handle_get_intrinsic_dimensions(handle, nullptr, nullptr, nullptr, nullptr, &hasViewBox,
                                       &box);
  if (hasViewBox != FALSE) return {0, 0, box.width, box.height};
  // The element is measured as if it began at its own corner, which only the layer has.
  rsvg_handle_get_geometry_for_element(handle, nullptr, &size, nullptr, nullptr);
  const RsvgRectangle viewport{0, 0, size.width, size.height};
  rsvg_handle_get_geometry_for_layer(handle, nullptr, &viewport, &box, nullptr, nullptr);
  return {box.x, box.y, size.width, size.height};
}

class SvgPicture : public Picture {
 public:
  SvgPicture(Handle handle, const RsvgRectangle& page) : m_Handle(std::move(handle)), m_Page(page) {
    SetSize(page.width * PointsPerPixel, page.height * PointsPerPixel);
  }

  [[nodiscard]] Expected<void> Draw(cairo_t* context) const override {
    const RsvgRectangle viewport{0, 0, m_Page.width, m_Page.height};
    cairo_save(context);
    cairo_scale(context, PointsPerPixel, PointsPerPixel);
    cairo_translate(context, -m_Page.x, -m_Page.y);
    GError* raised = nullptr;
    const bool drawn =
        rsvg_handle_render_document(m_Handle.get(), context, &viewport, &raised) != FALSE;
    const GlibError error(raised);
    cairo_restore(context);
    if (drawn) return {};
    return FailureOf("it is no SVG that can be drawn" + ReasonAfterColon(error));
  }
  [[nodiscard]] const char* MimeType() const override { return "image/svg+xml"; }

 private:
  Handle m_Handle;
  RsvgRectangle m_Page;
};

}  // namespace

OpenedPicture OpenSvg(const std::string& bytes, const std::string& stylesheet) {
  GError* raised = nullptr;
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const auto* data = reinterpret_cast<const guint8*>(bytes.data());
  Handle handle(rsvg_handle_new_from_data(data, bytes.size(), &raised));
  const GlibError error(raised);
  if (!handle) {
    return FailureOf("it is no SVG that can be drawn" + ReasonAfterColon(error));
  }
  rsvg_handle_set_dpi(handle.get(), PixelsPerInch);
  if (!stylesheet.empty()) {
    // NOLINTNEXTLINE: the library's bytes are unsigned
    const auto* css = reinterpret_cast<const guint8*>(stylesheet.data());
    rsvg_handle_set_stylesheet(handle.get(), css, stylesheet.size(), nullptr);
  }
  const RsvgRectangle page = PageOf(handle.get());
  return std::unique_ptr<Picture>(std::make_unique<SvgPicture>(std::move(handle), page));
}

}  // namespace rastrel::drawing
