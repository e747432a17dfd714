#include "cutting/svg/svg_color.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "cutting/svg/svg_text.h"
#include "rastrel/platform/os/hex.h"

namespace rastrel::cutting {
namespace {

struct Named {
  std::string_view name;
  int rgb;
};

// In the order of their letters.
constexpr std::array Names{Named{"aliceblue", 0xf0f8ff},
                           Named{"antiquewhite", 0xfaebd7},
                           Named{"aqua", 0x00ffff},
                           Named{"aquamarine", 0x7fffd4},
                           Named{"azure", 0xf0ffff},
                           Named{"beige", 0xf5f5dc},
                           Named{"bisque", 0xffe4c4},
                           Named{"black", 0x000000},
                           Named{"blanchedalmond", 0xffebcd},
                           Named{"blue", 0x0000ff},
                           Named{"blueviolet", 0x8a2be2},
                           Named{"brown", 0xa52a2a},
                           Named{"burlywood", 0xdeb887},
                           Named{"cadetblue", 0x5f9ea0},
                           Named{"chartreuse", 0x7fff00},
                           Named{"chocolate", 0xd2691e},
                           Named{"coral", 0xff7f50},
                           Named{"cornflowerblue", 0x6495ed},
                           Named{"cornsilk", 0xfff8dc},
                           Named{"crimson", 0xdc143c},
                           Named{"cyan", 0x00ffff},
                           Named{"darkblue", 0x00008b},
                           Named{"darkcyan", 0x008b8b},
                           Named{"darkgoldenrod", 0xb8860b},
                           Named{"darkgray", 0xa9a9a9},
                           Named{"darkgreen", 0x006400},
                           Named{"darkgrey", 0xa9a9a9},
                           Named{"darkkhaki", 0xbdb76b},
                           Named{"darkmagenta", 0x8b008b},
                           Named{"darkolivegreen", 0x556b2f},
                           Named{"darkorange", 0xff8c00},
                           Named{"darkorchid", 0x9932cc},
                           Named{"darkred", 0x8b0000},
                           Named{"darksalmon", 0xe9967a},
                           Named{"darkseagreen", 0x8fbc8f},
                           Named{"darkslateblue", 0x483d8b},
                           Named{"darkslategray", 0x2f4f4f},
                           Named{"darkslategrey", 0x2f4f4f},
                           Named{"darkturquoise", 0x00ced1},
                           Named{"darkviolet", 0x9400d3},
                           Named{"deeppink", 0xff1493},
                           Named{"deepskyblue", 0x00bfff},
                           Named{"dimgray", 0x696969},
                           Named{"dimgrey", 0x696969},
                           Named{"dodgerblue", 0x1e90ff},
                           Named{"firebrick", 0xb22222},
                           Named{"floralwhite", 0xfffaf0},
                           Named{"forestgreen", 0x228b22},
                           Named{"fuchsia", 0xff00ff},
                           Named{"gainsboro", 0xdcdcdc},
                           Named{"ghostwhite", 0xf8f8ff},
                           Named{"gold", 0xffd700},
                           Named{"goldenrod", 0xdaa520},
                           Named{"gray", 0x808080},
                           Named{"green", 0x008000},
                           Named{"greenyellow", 0xadff2f},
                           Named{"grey", 0x808080},
                           Named{"honeydew", 0xf0fff0},
                           Named{"hotpink", 0xff69b4},
                           Named{"indianred", 0xcd5c5c},
                           Named{"indigo", 0x4b0082},
                           Named{"ivory", 0xfffff0},
                           Named{"khaki", 0xf0e68c},
                           Named{"lavender", 0xe6e6fa},
                           Named{"lavenderblush", 0xfff0f5},
                           Named{"lawngreen", 0x7cfc00},
                           Named{"lemonchiffon", 0xfffacd},
                           Named{"lightblue", 0xadd8e6},
                           Named{"lightcoral", 0xf08080},
                           Named{"lightcyan", 0xe0ffff},
                           Named{"lightgoldenrodyellow", 0xfafad2},
                           Named{"lightgray", 0xd3d3d3},
                           Named{"lightgreen", 0x90ee90},
                           Named{"lightgrey", 0xd3d3d3},
                           Named{"lightpink", 0xffb6c1},
                           Named{"lightsalmon", 0xffa07a},
                           Named{"lightseagreen", 0x20b2aa},
                           Named{"lightskyblue", 0x87cefa},
                           Named{"lightslategray", 0x778899},
                           Named{"lightslategrey", 0x778899},
                           Named{"lightsteelblue", 0xb0c4de},
                           Named{"lightyellow", 0xffffe0},
                           Named{"lime", 0x00ff00},
                           Named{"limegreen", 0x32cd32},
                           Named{"linen", 0xfaf0e6},
                           Named{"magenta", 0xff00ff},
                           Named{"maroon", 0x800000},
                           Named{"mediumaquamarine", 0x66cdaa},
                           Named{"mediumblue", 0x0000cd},
                           Named{"mediumorchid", 0xba55d3},
                           Named{"mediumpurple", 0x9370db},
                           Named{"mediumseagreen", 0x3cb371},
                           Named{"mediumslateblue", 0x7b68ee},
                           Named{"mediumspringgreen", 0x00fa9a},
                           Named{"mediumturquoise", 0x48d1cc},
                           Named{"mediumvioletred", 0xc71585},
                           Named{"midnightblue", 0x191970},
                           Named{"mintcream", 0xf5fffa},
                           Named{"mistyrose", 0xffe4e1},
                           Named{"moccasin", 0xffe4b5},
                           Named{"navajowhite", 0xffdead},
                           Named{"navy", 0x000080},
                           Named{"oldlace", 0xfdf5e6},
                           Named{"olive", 0x808000},
                           Named{"olivedrab", 0x6b8e23},
                           Named{"orange", 0xffa500},
                           Named{"orangered", 0xff4500},
                           Named{"orchid", 0xda70d6},
                           Named{"palegoldenrod", 0xeee8aa},
                           Named{"palegreen", 0x98fb98},
                           Named{"paleturquoise", 0xafeeee},
                           Named{"palevioletred", 0xdb7093},
                           Named{"papayawhip", 0xffefd5},
                           Named{"peachpuff", 0xffdab9},
                           Named{"peru", 0xcd853f},
                           Named{"pink", 0xffc0cb},
                           Named{"plum", 0xdda0dd},
                           Named{"powderblue", 0xb0e0e6},
                           Named{"purple", 0x800080},
                           Named{"rebeccapurple", 0x663399},
                           Named{"red", 0xff0000},
                           Named{"rosybrown", 0xbc8f8f},
                           Named{"royalblue", 0x4169e1},
                           Named{"saddlebrown", 0x8b4513},
                           Named{"salmon", 0xfa8072},
                           Named{"sandybrown", 0xf4a460},
                           Named{"seagreen", 0x2e8b57},
                           Named{"seashell", 0xfff5ee},
                           Named{"sienna", 0xa0522d},
                           Named{"silver", 0xc0c0c0},
                           Named{"skyblue", 0x87ceeb},
                           Named{"slateblue", 0x6a5acd},
                           Named{"slategray", 0x708090},
                           Named{"slategrey", 0x708090},
                           Named{"snow", 0xfffafa},
                           Named{"springgreen", 0x00ff7f},
                           Named{"steelblue", 0x4682b4},
                           Named{"tan", 0xd2b48c},
                           Named{"teal", 0x008080},
                           Named{"thistle", 0xd8bfd8},
                           Named{"tomato", 0xff6347},
                           Named{"turquoise", 0x40e0d0},
                           Named{"violet", 0xee82ee},
                           Named{"wheat", 0xf5deb3},
                           Named{"white", 0xffffff},
                           Named{"whitesmoke", 0xf5f5f5},
                           Named{"yellow", 0xffff00},
                           Named{"yellowgreen", 0x9acd32}};

PaintColor Rgb(double red, double green, double blue) {
  const auto part = [](double value) { return std::clamp(value, 0.0, 1.0); };
  return {ColorModel::Rgb, {part(red), part(green), part(blue)}, {}};
}

// "#rgb", "#rrggbb", and with one or two digits more for the alpha.
std::optional<SvgColor> FromHex(std::string_view digits) {
  const bool isShort = digits.size() == 3 || digits.size() == 4;
  if (!isShort && digits.size() != 6 && digits.size() != 8) return {};
  std::vector<double> parts;
  const std::size_t step = isShort ? 1 : 2;
  for (std::size_t at = 0; at < digits.size(); at += step) {
    const auto byte = os::ByteFromHex(digits[at], digits[at + step - 1]);
    if (!byte) return {};
    parts.push_back(static_cast<unsigned char>(*byte) / 255.0);
  }
  return SvgColor{Rgb(parts[0], parts[1], parts[2]), parts.size() == 4 ? parts[3] : 1};
}

// The numbers of "(1, 2%, 3deg / 4)", per cent as parts of `whole`, which the first three have.
std::vector<double> Arguments(SvgScanner& scanner, double whole) {
  std::vector<double> values;
  if (!scanner.Take('(')) return {};
  scanner.SkipWhitespace();
  while (!scanner.Take(')')) {
    const auto value = scanner.Number();
    if (!value || values.size() == 5) return {};
    const bool isPercent = scanner.Take('%');
    if (!isPercent) static_cast<void>(scanner.Word());
    values.push_back(isPercent ? *value / 100 * (values.size() < 3 ? whole : 1) : *value);
    scanner.SkipComma();
    if (scanner.Take('/')) scanner.SkipWhitespace();
  }
  return values;
}

// Red, green and blue of a hue in degrees.
PaintColor FromHsl(double hue, double saturation, double lightness) {
  const auto part = [&](double offset) {
    const double k = std::fmod(std::fmod(offset + hue / 30, 12) + 12, 12);
    const double amplitude = saturation * std::min(lightness, 1 - lightness);
    return lightness - amplitude * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
  };
  return Rgb(part(0), part(8), part(4));
}

std::optional<SvgColor> FromFunction(std::string_view name, SvgScanner& scanner) {
  const bool isRgb = SvgSame(name, "rgb") || SvgSame(name, "rgba");
  const bool isHsl = SvgSame(name, "hsl") || SvgSame(name, "hsla");
  const bool isCmyk = SvgSame(name, "device-cmyk");
  if (!isRgb && !isHsl && !isCmyk) return {};
  const std::vector<double> values = Arguments(scanner, isRgb ? 255 : 1);
  const std::size_t parts = isCmyk ? 4 : 3;
  if (values.size() != parts && values.size() != parts + 1) return {};
  const double alpha = values.size() > parts ? values[parts] : 1;
  if (isRgb) return SvgColor{Rgb(values[0] / 255, values[1] / 255, values[2] / 255), alpha};
  if (isHsl)
    return SvgColor{
        FromHsl(values[0], std::clamp(values[1], 0.0, 1.0), std::clamp(values[2], 0.0, 1.0)),
        alpha};
  PaintColor cmyk{ColorModel::Cmyk, {values.begin(), values.begin() + 4}, {}};
  for (double& component : cmyk.components) component = std::clamp(component, 0.0, 1.0);
  return SvgColor{cmyk, alpha};
}

}  // namespace

std::optional<SvgColor> SvgColorOf(std::string_view text) {
  text = SvgTrimmed(text);
  if (text.starts_with('#')) return FromHex(text.substr(1));
  SvgScanner scanner(text);
  const std::string_view word = scanner.Word();
  if (!scanner.AtEnd()) return FromFunction(word, scanner);
  if (SvgSame(word, "transparent")) return SvgColor{Rgb(0, 0, 0), 0};
  for (const Named& named : Names)
    if (SvgSame(word, named.name))
      return SvgColor{Rgb((named.rgb >> 16) / 255.0, (named.rgb >> 8 & 0xFF) / 255.0,
                          (named.rgb & 0xFF) / 255.0),
                      1};
  return {};
}

}  // namespace rastrel::cutting
