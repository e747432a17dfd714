#include "cli/cutting/shown_print.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rastrel::cli {
namespace {

constexpr std::size_t BytesPerPixel = 4;
constexpr double Full = 255;

using Light = std::array<double, 3>;  // red, green, blue, from 0 to 1

double Strength(char sample) { return static_cast<unsigned char>(sample) / Full; }

// 255 is white, or no ink.
Light LightOf(const cutting::PixelInks& inks, const char* pixel) {
  switch (inks.process) {
    case cutting::ProcessColors::Gray:
      return {Strength(pixel[0]), Strength(pixel[0]), Strength(pixel[0])};
    case cutting::ProcessColors::Rgb:
      return {Strength(pixel[0]), Strength(pixel[1]), Strength(pixel[2])};
    case cutting::ProcessColors::Cmyk: break;
  }
  Light light{};
  for (std::size_t i = 0; i < light.size(); ++i) {
    light[i] = Strength(pixel[i]) * Strength(pixel[3]);
    for (std::size_t spot = 0; spot < inks.spots.size(); ++spot) {
      const auto& look = inks.spots[spot].look;
      const double left = (1 - look[i]) * (1 - look[3]);
      light[i] *= 1 - (1 - Strength(pixel[4 + spot])) * (1 - left);
    }
  }
  return light;
}

std::byte ByteOf(double light) {
  return static_cast<std::byte>(std::lround(std::clamp(light, 0.0, 1.0) * Full));
}

}  // namespace

Expected<cutting::ShownPrint> PrintOnScreen(PagePicture& picture, const PictureMargins& margins) {
  const std::uint32_t longer = std::max(picture.width, picture.height);
  const std::uint32_t square = std::max((longer + MaximumShownEdge - 1) / MaximumShownEdge, 1U);
  const std::uint32_t width = (picture.width + square - 1) / square;
  const std::uint32_t height = (picture.height + square - 1) / square;
  const std::size_t samples = picture.inks.Samples();
  cutting::ShownPrint print;
  print.width = static_cast<int>(width);
  print.height = static_cast<int>(height);
  print.bgra.resize(std::size_t{width} * height * BytesPerPixel, std::byte{255});
  // Squares that reach over the edge have fewer pixels, and show as much of the page as they reach.
  print.place.left = margins.left * picture.PixelWidth();
  print.place.right = print.place.left + static_cast<double>(width) * square * picture.PixelWidth();
  print.place.top = (margins.bottom + static_cast<double>(picture.height)) * picture.PixelHeight();
  print.place.bottom =
      print.place.top - static_cast<double>(height) * square * picture.PixelHeight();
  std::vector<char> row(picture.width * samples);
  std::vector<Light> sums(width);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::ranges::fill(sums, Light{});
    const std::uint32_t rows = std::min(square, picture.height - y * square);
    for (std::uint32_t i = 0; i < rows; ++i) {
      if (auto read = picture.Read(y * square + i, 0, row); !read) return read.Error();
      for (std::uint32_t x = 0; x < picture.width; ++x) {
        const Light light = LightOf(picture.inks, &row[x * samples]);
        for (std::size_t c = 0; c < light.size(); ++c) sums[x / square][c] += light[c];
      }
    }
    for (std::uint32_t x = 0; x < width; ++x) {
      const double count = static_cast<double>(rows) * std::min(square, picture.width - x * square);
      const std::span pixel(&print.bgra[(std::size_t{y} * width + x) * BytesPerPixel],
                            BytesPerPixel);
      for (std::size_t c = 0; c < 3; ++c) pixel[c] = ByteOf(sums[x][2 - c] / count);
    }
  }
  return print;
}

}  // namespace rastrel::cli
