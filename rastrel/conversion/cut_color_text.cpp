#include "rastrel/conversion/cut_color_text.h"

#include "rastrel/job/format_string.h"

namespace rastrel::conversion {

namespace {

constexpr double ChannelScale = 255.0;

std::wstring RgbText(const CVKFullColor& color, const wchar_t* format) {
  double red = 0;
  double green = 0;
  double blue = 0;
  double unused = 0;
  color.GetColorChannels(&red, &green, &blue, &unused);
  formatstringT<wchar_t> text;
  text.Format(format, red / ChannelScale, green / ChannelScale, blue / ChannelScale);
  return text;
}

std::wstring CmykText(const CVKFullColor& color, const wchar_t* format) {
  double cyan = 0;
  double magenta = 0;
  double yellow = 0;
  double black = 0;
  color.GetCMYKcolor(&cyan, &magenta, &yellow, &black);
  formatstringT<wchar_t> text;
  text.Format(format, cyan, magenta, yellow, black);
  return text;
}

std::wstring NamedText(const CVKFullColor& color, const wchar_t* format) {
  std::wstring name;
  if (color.GetColorName(name) == 0) return {};
  formatstringT<wchar_t> text;
  text.Format(format, name);
  return text;
}

}  // namespace

std::wstring CutColorText(const CPS2CutData& cut, const CutColorFormats& formats) {
  switch (cut.colorKind) {
    case CutColorRgb: return RgbText(cut.color, formats.rgb);
    case CutColorCmyk: return CmykText(cut.color, formats.cmyk);
    case CutColorNamed: return NamedText(cut.color, formats.named);
    default: return {};
  }
}

}  // namespace rastrel::conversion
