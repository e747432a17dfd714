#include "cutting/dxf/dxf_color.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rastrel::cutting {
namespace {

// Red, green and blue from 0 to 255.
PaintColor Rgb(int red, int green, int blue) {
  return {ColorModel::Rgb, {red / 255.0, green / 255.0, blue / 255.0}, {}};
}

// Of a full color: how much of it has the hue `sixths` in sixths of the circle, from 0 to 1.
double Part(double sixths, double peak) {
  double away = std::abs(sixths - peak);
  away = std::min(away, 6 - away);
  return std::clamp(2 - away, 0.0, 1.0);
}

// 10 to 249: 24 hues, of 15 degrees each; of a hue five values, each in full and in half
// saturation.
PaintColor OfHue(int number) {
  static constexpr std::array Values{255, 165, 127, 76, 38};
  const double sixths = (number / 10 - 1) / 4.0;
  const int value = Values.at(static_cast<std::size_t>(number % 10 / 2));
  const auto component = [&](double peak) {
    const int full = static_cast<int>(255 * Part(sixths, peak));
    const int shown = number % 2 == 0 ? full : 127 + (full + 1) / 2;
    return shown * value / 255;
  };
  return Rgb(component(0), component(2), component(4));
}

}  // namespace

PaintColor DxfColor(int number) {
  static constexpr std::array Grays{51, 80, 105, 130, 190, 255};
  switch (number) {
    case 1: return Rgb(255, 0, 0);
    case 2: return Rgb(255, 255, 0);
    case 3: return Rgb(0, 255, 0);
    case 4: return Rgb(0, 255, 255);
    case 5: return Rgb(0, 0, 255);
    case 6: return Rgb(255, 0, 255);
    case 8: return Rgb(128, 128, 128);
    case 9: return Rgb(192, 192, 192);
    default: break;
  }
  if (number >= 10 && number <= 249) return OfHue(number);
  if (number < 250 || number > 255) return Rgb(0, 0, 0);
  const int gray = Grays.at(static_cast<std::size_t>(number - 250));
  return Rgb(gray, gray, gray);
}

PaintColor DxfTrueColor(int rgb) { return Rgb((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF); }

}  // namespace rastrel::cutting
