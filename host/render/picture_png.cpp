#include "host/render/picture_png.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string_view>

#include "host/graphics/picture.h"

namespace rastrel::render {

namespace {

constexpr double PointsPerInch = 72;
constexpr double PictureDpi = 300;
constexpr double MaximumPixels = 16e6;
constexpr double MaximumSide = 32'000;  // cairo's pictures end at 32767

struct CairoEnd {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

cairo_status_t Append(void* target, const unsigned char* bytes, unsigned count) {
  // NOLINTNEXTLINE: the library's bytes are unsigned
  static_cast<std::string*>(target)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

// The check sum of PNG chunks (ISO 15948, annex D).
std::uint32_t CheckSum(std::string_view bytes) {
  std::uint32_t sum = 0xFFFFFFFF;
  for (const char byte : bytes) {
    sum ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) sum = (sum & 1) != 0 ? sum >> 1 ^ 0xEDB88320 : sum >> 1;
  }
  return ~sum;
}

void AppendBigEndian(std::string& text, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
}

// A pHYs chunk: pixels to the metre.
std::string ResolutionChunk(double dpi) {
  constexpr double inchesPerMetre = 1 / 0.0254;
  const auto perMetre = static_cast<std::uint32_t>(std::lround(dpi * inchesPerMetre));
  std::string body = "pHYs";
  AppendBigEndian(body, perMetre);
  AppendBigEndian(body, perMetre);
  body += '\1';
  std::string chunk;
  AppendBigEndian(chunk, 9);
  chunk += body;
  AppendBigEndian(chunk, CheckSum(body));
  return chunk;
}

}  // namespace

std::string PngOfSurface(cairo_surface_t* surface, double dpi) {
  constexpr std::size_t headEnd = 8 + 25;  // the signature, and the chunk that is always first
  std::string png;
  if (cairo_surface_write_to_png_stream(surface, Append, &png) != CAIRO_STATUS_SUCCESS) return {};
  png.insert(headEnd, ResolutionChunk(dpi));
  return png;
}

std::string PngOfPicture(const graphics::Picture& picture) {
  const double area = picture.Width() * picture.Height();
  const double longest = std::max(picture.Width(), picture.Height());
  const double scale = std::min(
      {PictureDpi / PointsPerInch, std::sqrt(MaximumPixels / area), MaximumSide / longest});
  const auto pixels = [&](double points) {
    return std::max(1, static_cast<int>(std::ceil(points * scale)));
  };
  const std::unique_ptr<cairo_surface_t, CairoEnd> surface(cairo_image_surface_create(
      CAIRO_FORMAT_ARGB32, pixels(picture.Width()), pixels(picture.Height())));
  const std::unique_ptr<cairo_t, CairoEnd> context(cairo_create(surface.get()));
  cairo_scale(context.get(), pixels(picture.Width()) / picture.Width(),
              pixels(picture.Height()) / picture.Height());
  picture.Draw(context.get());
  return PngOfSurface(surface.get(), scale * PointsPerInch);
}

}  // namespace rastrel::render
