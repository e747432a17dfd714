#include "host/graphics/indexed_color.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace rastrel::graphics {

// 1 to 9 are named, 10 to 249 are 24 hues in five values, each once full and once half as strong,
// 250 to 255 are grays.
VectorPath::Rgb IndexedColor(int index) {
  constexpr std::array<VectorPath::Rgb, 10> named = {{{0, 0, 0},
                                                      {255, 0, 0},
                                                      {255, 255, 0},
                                                      {0, 255, 0},
                                                      {0, 255, 255},
                                                      {0, 0, 255},
                                                      {255, 0, 255},
                                                      {0, 0, 0},
                                                      {128, 128, 128},
                                                      {192, 192, 192}}};
  constexpr std::array<double, 6> grays = {51, 91, 132, 173, 214, 255};
  constexpr std::array<double, 5> values = {255, 165, 127, 76, 38};
  if (index < 0 || index > 255) return named[0];
  if (index < 10) return named[static_cast<std::size_t>(index)];
  if (index >= 250) {
    const double gray = grays[static_cast<std::size_t>(index - 250)];
    return {gray, gray, gray};
  }
  const double hue = (index / 10 - 1) / 4.0;  // 0 to 6, from red by yellow, green, cyan and blue
  const double value = values[static_cast<std::size_t>(index % 10 / 2)];
  const double strength = index % 2 == 0 ? 1 : 0.5;
  VectorPath::Rgb color{};
  for (std::size_t part = 0; part < 3; ++part) {
    // How far around the circle the hue is from this part's own, at most half of it.
    const double away = std::abs(std::remainder(hue - 2.0 * static_cast<double>(part), 6));
    const double full = std::clamp(2 - away, 0.0, 1.0);
    color[part] = std::floor(value * (1 - strength + strength * full));
  }
  return color;
}

int IndexOfColor(const VectorPath::Rgb& color) {
  constexpr int LastIndex = 255;
  int nearest = 1;
  double least = INFINITY;
  for (int index = 1; index <= LastIndex; ++index) {
    const VectorPath::Rgb candidate = IndexedColor(index);
    double distance = 0;
    for (std::size_t part = 0; part < candidate.size(); ++part) {
      const double away = candidate[part] - (std::isnan(color[part]) ? 0 : color[part]);
      distance += away * away;
    }
    if (distance < least) {
      least = distance;
      nearest = index;
    }
  }
  return nearest;
}

}  // namespace rastrel::graphics
