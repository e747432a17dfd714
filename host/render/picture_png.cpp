#include "host/render/picture_png.h"

#include <cairo.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "host/graphics/picture.h"
#include "host/render/cairo_objects.h"

namespace rastrel::render {

namespace {

constexpr double PointsPerInch = 72;
constexpr double PictureDpi = 300;
constexpr double MaximumPixels = 16e6;
constexpr double MaximumSide = 32'000;  // cairo's pictures end at 32767

void AppendBigEndian(std::string& text, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 0xFF);
}

// A chunk that names the resolution (ISO 15948, 11.3.5.3). All numbers have the most significant
// byte first:
//
//     +---------------+---------+---------------+---------------+-----------+-------------+
//     | length 9      | "pHYs"  | pixels per    | pixels per    | unit 1    | check sum   |
//     | 4 bytes       | 4 bytes | metre, x: 4   | metre, y: 4   | 1 byte    | 4 bytes     |
//     +---------------+---------+---------------+---------------+-----------+-------------+
//                     |<------- the check sum is of these ----------------->|
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
  // NOLINTNEXTLINE: the library's bytes are unsigned
  const auto* summed = reinterpret_cast<const Bytef*>(body.data());
  AppendBigEndian(chunk, static_cast<std::uint32_t>(crc32_z(0, summed, body.size())));
  return chunk;
}

}  // namespace

std::string PngOfSurface(cairo_surface_t* surface, double dpi) {
  constexpr std::size_t headEnd = 8 + 25;  // the signature, and the chunk that is always first
  std::string png = PngBytes(surface);
  if (png.empty()) return {};
  png.insert(headEnd, ResolutionChunk(dpi));
  return png;
}

Expected<std::string> PngOfPicture(const graphics::Picture& picture) {
  const double area = picture.Width() * picture.Height();
  const double longest = std::max(picture.Width(), picture.Height());
  const double scale = std::min(
      {PictureDpi / PointsPerInch, std::sqrt(MaximumPixels / area), MaximumSide / longest});
  const auto pixels = [&](double points) {
    return std::max(1, static_cast<int>(std::ceil(points * scale)));
  };
  const CairoSurface surface(cairo_image_surface_create(
      CAIRO_FORMAT_ARGB32, pixels(picture.Width()), pixels(picture.Height())));
  const CairoContext context(cairo_create(surface.get()));
  cairo_scale(context.get(), pixels(picture.Width()) / picture.Width(),
              pixels(picture.Height()) / picture.Height());
  if (const auto drawn = picture.Draw(context.get()); !drawn) return drawn.Error();
  return PngOfSurface(surface.get(), scale * PointsPerInch);
}

}  // namespace rastrel::render
