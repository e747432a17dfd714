#include "host/render/plane_picture.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace rastrel::render {

namespace {

constexpr int MaximumSide = 32'000;  // cairo's pictures end at 32767

// How many pixels become one along each side.
struct Factors {
  int x = 1;
  int y = 1;
};

int Reduced(int side, int factor) { return (side + factor - 1) / factor; }

Factors FactorsFor(const SeparationPlane& plane, double maximumPixels) {
  Factors factors{Reduced(plane.width, MaximumSide), Reduced(plane.height, MaximumSide)};
  const double pixels = static_cast<double>(plane.width) / factors.x * plane.height / factors.y;
  if (pixels > maximumPixels) {
    const int both = static_cast<int>(std::ceil(std::sqrt(pixels / maximumPixels)));
    factors.x *= both;
    factors.y *= both;
  }
  return factors;
}

// The mean ink, 0 to 255, of the pixels that become one.
std::uint8_t MeanCover(const SeparationPlane& plane, const Factors& factors, int x, int y) {
  const int right = std::min((x + 1) * factors.x, plane.width);
  const int bottom = std::min((y + 1) * factors.y, plane.height);
  std::uint64_t sum = 0;
  for (int row = y * factors.y; row < bottom; ++row) {
    const auto line =
        plane.pixels.subspan(static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.width));
    for (int column = x * factors.x; column < right; ++column)
      sum += 255U - line[static_cast<std::size_t>(column)];
  }
  const auto count = static_cast<std::uint64_t>(right - x * factors.x) *
                     static_cast<std::uint64_t>(bottom - y * factors.y);
  return static_cast<std::uint8_t>((sum + count / 2) / count);
}

// Calls `write(row, covers)` for each row of the reduced plane.
template <typename Write>
void EachRow(const SeparationPlane& plane, const Factors& factors, int width, int height,
             Write write) {
  std::vector<std::uint8_t> covers(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    if (factors.x == 1 && factors.y == 1) {
      const auto line = plane.pixels.subspan(
          static_cast<std::size_t>(y) * static_cast<std::size_t>(width), covers.size());
      std::ranges::transform(line, covers.begin(), [](std::uint8_t pixel) {
        return static_cast<std::uint8_t>(255U - pixel);
      });
    } else {
      for (int x = 0; x < width; ++x)
        covers[static_cast<std::size_t>(x)] = MeanCover(plane, factors, x, y);
    }
    write(y, covers);
  }
}

PlanePicture EmptyPicture(const SeparationPlane& plane, const Factors& factors,
                          cairo_format_t format) {
  PlanePicture picture;
  picture.width = Reduced(plane.width, factors.x);
  picture.height = Reduced(plane.height, factors.y);
  picture.surface.reset(cairo_image_surface_create(format, picture.width, picture.height));
  if (cairo_surface_status(picture.surface.get()) != CAIRO_STATUS_SUCCESS) picture.surface.reset();
  return picture;
}

}  // namespace

PlanePicture CoverOf(const SeparationPlane& plane) {
  const Factors factors = FactorsFor(plane, INFINITY);
  PlanePicture picture = EmptyPicture(plane, factors, CAIRO_FORMAT_A8);
  if (!picture.surface) return picture;
  cairo_surface_flush(picture.surface.get());
  unsigned char* const pixels = cairo_image_surface_get_data(picture.surface.get());
  const int stride = cairo_image_surface_get_stride(picture.surface.get());
  EachRow(plane, factors, picture.width, picture.height, [&](int row, const auto& covers) {
    std::ranges::copy(covers, pixels + static_cast<std::ptrdiff_t>(row) * stride);
  });
  cairo_surface_mark_dirty(picture.surface.get());
  return picture;
}

PlanePicture InkOf(const SeparationPlane& plane, double maximumPixels) {
  const Factors factors = FactorsFor(plane, maximumPixels);
  PlanePicture picture = EmptyPicture(plane, factors, CAIRO_FORMAT_ARGB32);
  if (!picture.surface) return picture;
  cairo_surface_flush(picture.surface.get());
  unsigned char* const pixels = cairo_image_surface_get_data(picture.surface.get());
  const int stride = cairo_image_surface_get_stride(picture.surface.get());
  const auto part = [](double color, std::uint32_t cover) {
    return static_cast<std::uint32_t>(std::lround(color * cover));
  };
  std::vector<std::uint32_t> inks(256);  // cairo wants colors multiplied by alpha
  for (std::uint32_t cover = 0; cover < inks.size(); ++cover)
    inks[cover] = cover << 24U | part(plane.ink.red, cover) << 16U |
                  part(plane.ink.green, cover) << 8U | part(plane.ink.blue, cover);
  EachRow(plane, factors, picture.width, picture.height, [&](int row, const auto& covers) {
    auto* const line = reinterpret_cast<std::uint32_t*>(  // cairo aligns rows to whole pixels
        pixels + static_cast<std::ptrdiff_t>(row) * stride);
    std::ranges::transform(covers, line, [&](std::uint8_t cover) { return inks[cover]; });
  });
  cairo_surface_mark_dirty(picture.surface.get());
  return picture;
}

}  // namespace rastrel::render
