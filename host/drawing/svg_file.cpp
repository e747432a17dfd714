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

struct Size {
  double width = 0;
  double height = 0;
};

// In px: of width and height, else of the view box, else of the drawing.
Size SizeOf(RsvgHandle* handle) {
  Size size;
  if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &size.width, &size.height) != FALSE) {
    return size;
  }
  gboolean hasViewBox = FALSE;
  RsvgRectangle box{};
  rsvg_handle_get_intrinsic_dimensions(handle, nullptr, nullptr, nullptr, nullptr, &hasViewBox,
                                       &box);
  if (hasViewBox == FALSE) {
    rsvg_handle_get_geometry_for_element(handle, nullptr, &box, nullptr, nullptr);
  }
  return {box.width, box.height};
}

class SvgPicture : public Picture {
 public:
  SvgPicture(Handle handle, const Size& pixels) : m_Handle(std::move(handle)), m_Pixels(pixels) {
    SetSize(pixels.width * PointsPerPixel, pixels.height * PointsPerPixel);
  }

  [[nodiscard]] Expected<void> Draw(cairo_t* context) const override {
    const RsvgRectangle viewport{0, 0, m_Pixels.width, m_Pixels.height};
    cairo_save(context);
    cairo_scale(context, PointsPerPixel, PointsPerPixel);
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
  Size m_Pixels;
};

}  // namespace

OpenedPicture OpenSvg(const std::string& bytes) {
  GError* raised = nullptr;
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const auto* data = reinterpret_cast<const guint8*>(bytes.data());
  Handle handle(rsvg_handle_new_from_data(data, bytes.size(), &raised));
  const GlibError error(raised);
  if (!handle) {
    return FailureOf("it is no SVG that can be drawn" + ReasonAfterColon(error));
  }
  rsvg_handle_set_dpi(handle.get(), PixelsPerInch);
  const Size size = SizeOf(handle.get());
  return std::unique_ptr<Picture>(std::make_unique<SvgPicture>(std::move(handle), size));
}

}  // namespace rastrel::drawing
