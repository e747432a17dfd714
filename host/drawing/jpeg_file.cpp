#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "host/drawing/big_endian.h"
#include "host/drawing/glib_objects.h"
#include "host/drawing/image_picture.h"
#include "host/drawing/picture_formats.h"

/// JPEG files as pictures.
namespace rastrel::drawing {

namespace {

constexpr double CentimetresPerInch = 2.54;

struct JpegHead {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t components = 0;
  Resolution resolution;
};

// Whether a marker begins a frame, whose head says how large the image is.
bool BeginsFrame(std::uint32_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

Resolution JfifResolution(std::string_view segment) {
  const double x = BigEndian(segment, 8, 2);
  const double y = BigEndian(segment, 10, 2);
  switch (segment.size() > 7 ? segment[7] : 0) {
    case 1: return Plausible(x, y);
    case 2: return Plausible(x * CentimetresPerInch, y * CentimetresPerInch);
    default:  // a ratio alone
      return {};
  }
}

JpegHead HeadOfJpeg(std::string_view bytes) {
  JpegHead head;
  std::size_t place = 2;
  while (place + 4 <= bytes.size() && bytes[place] == '\xFF') {
    const std::uint32_t marker = BigEndian(bytes, place + 1, 1);
    if (marker == 0xFF) {  // a byte that only fills
      ++place;
      continue;
    }
    const std::size_t length = BigEndian(bytes, place + 2, 2);
    const std::string_view segment = bytes.substr(place + 4, length < 2 ? 0 : length - 2);
    if (marker == 0xE0 && segment.starts_with(std::string_view("JFIF\0", 5))) {
      head.resolution = JfifResolution(segment);
    }
    if (BeginsFrame(marker)) {
      head.height = BigEndian(segment, 1, 2);
      head.width = BigEndian(segment, 3, 2);
      head.components = BigEndian(segment, 5, 1);
      break;
    }
    if (marker == 0xDA || length < 2) break;
    place += 2 + length;
  }
  return head;
}

// The pixels of a decoded image on a surface.
Surface SurfaceOf(const GdkPixbuf* pixels) {
  const int width = gdk_pixbuf_get_width(pixels);
  const int height = gdk_pixbuf_get_height(pixels);
  const int channels = gdk_pixbuf_get_n_channels(pixels);
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
  unsigned char* target = cairo_image_surface_get_data(surface.get());
  if (!target) return surface;
  const int stride = cairo_image_surface_get_stride(surface.get());
  const guint8* source = gdk_pixbuf_read_pixels(pixels);
  for (int y = 0; y < height; ++y) {
    const guint8* from = source + std::ptrdiff_t{y} * gdk_pixbuf_get_rowstride(pixels);
    unsigned char* to = target + std::ptrdiff_t{y} * stride;
    for (int x = 0; x < width; ++x, from += channels, to += 4) {
      const std::uint32_t pixel =
          std::uint32_t{from[0]} << 16 | std::uint32_t{from[1]} << 8 | from[2];
      std::memcpy(to, &pixel, sizeof pixel);
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

// The file's own bytes go along, so that a PDF can carry them rather than the pixels.
void AttachJpeg(cairo_surface_t* surface, const std::string& bytes) {
  auto copy = std::make_unique<std::string>(bytes);
  const auto* data = reinterpret_cast<const unsigned char*>(copy->data());  // NOLINT
  const auto end = [](void* text) { delete static_cast<std::string*>(text); };
  if (cairo_surface_set_mime_data(surface, CAIRO_MIME_TYPE_JPEG, data, copy->size(), end,
                                  copy.get()) == CAIRO_STATUS_SUCCESS) {
    static_cast<void>(copy.release());  // the surface's now
  }
}

}  // namespace

OpenedPicture OpenJpeg(const std::string& bytes) {
  const JpegHead head = HeadOfJpeg(bytes);
  if (const auto size = CheckImageSize(head.width, head.height); !size) return size.Error();
  const std::unique_ptr<GdkPixbufLoader, GlibEnd> loader(
      gdk_pixbuf_loader_new_with_type("jpeg", nullptr));
  GError* raised = nullptr;
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const auto* data = reinterpret_cast<const guchar*>(bytes.data());
  const bool written = gdk_pixbuf_loader_write(loader.get(), data, bytes.size(), &raised) != FALSE;
  const bool whole = gdk_pixbuf_loader_close(loader.get(), written ? &raised : nullptr) != FALSE;
  const GlibError error(raised);
  const GdkPixbuf* pixels = gdk_pixbuf_loader_get_pixbuf(loader.get());
  if (!written || !whole || !pixels) {
    return FailureOf("it is no whole JPEG file" + ReasonAfterColon(error));
  }
  Surface surface = SurfaceOf(pixels);
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
    return FailureOf("there is no memory for its pixels");
  }
  // Viewers show four inks in different ways, some of them inverted.
  const bool carried = head.components == 1 || head.components == 3;
  if (carried) AttachJpeg(surface.get(), bytes);
  return std::unique_ptr<Picture>(std::make_unique<ImagePicture>(
      std::move(surface), head.resolution, carried ? "image/jpeg" : nullptr));
}

}  // namespace rastrel::drawing
