#include <cairo.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "host/drawing/big_endian.h"
#include "host/drawing/image_picture.h"
#include "host/drawing/picture_formats.h"

/// PNG files as pictures.
namespace rastrel::drawing {

namespace {

constexpr double MetresPerInch = 0.0254;

constexpr std::size_t PngSignature = 8;
constexpr std::size_t ChunkFrame = 12;  // length, name and check sum

Resolution PngResolution(std::string_view bytes) {
  std::size_t place = PngSignature;
  while (place + ChunkFrame <= bytes.size()) {
    const std::size_t length = BigEndian(bytes, place, 4);
    const std::string_view name = bytes.substr(place + 4, 4);
    if (name == "IDAT" || name == "IEND" || length > bytes.size()) break;
    if (name == "pHYs" && length == 9 && bytes[place + 16] == 1) {
      return Plausible(BigEndian(bytes, place + 8, 4) * MetresPerInch,
                       BigEndian(bytes, place + 12, 4) * MetresPerInch);
    }
    place += ChunkFrame + length;
  }
  return {};
}

struct Reader {
  std::string_view rest;
};

cairo_status_t ReadBytes(void* source, unsigned char* bytes, unsigned count) {
  std::string_view& rest = static_cast<Reader*>(source)->rest;
  if (count > rest.size()) return CAIRO_STATUS_READ_ERROR;
  std::memcpy(bytes, rest.data(), count);
  rest.remove_prefix(count);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

OpenedPicture OpenPng(const std::string& bytes) {
  const auto size = CheckImageSize(BigEndian(bytes, 16, 4), BigEndian(bytes, 20, 4));
  if (!size) return size.Error();
  Reader reader{bytes};
  Surface surface(cairo_image_surface_create_from_png_stream(ReadBytes, &reader));
  const cairo_status_t status = cairo_surface_status(surface.get());
  if (status != CAIRO_STATUS_SUCCESS) {
    return FailureOf(std::string("it is no whole PNG file: ") + cairo_status_to_string(status));
  }
  return std::unique_ptr<Picture>(
      std::make_unique<ImagePicture>(std::move(surface), PngResolution(bytes), "image/png"));
}

}  // namespace rastrel::drawing
