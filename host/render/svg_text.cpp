#include "host/render/svg_text.h"

#include <algorithm>
#include <cmath>

#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::render {

namespace {

constexpr double MillimetresPerPoint = 25.4 / 72;

// XML 1.0, production 2.
bool IsXmlCharacter(wchar_t character) {
  const auto code = static_cast<unsigned long>(character);
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

}  // namespace

void AppendMillimetres(std::string& text, double points) {
  text += os::ShortDecimal(points * MillimetresPerPoint, 4);
}

void AppendPoint(std::string& text, const Point& point) {
  AppendMillimetres(text, point.x);
  text += ' ';
  AppendMillimetres(text, point.y);
}

void AppendNumber(std::string& text, double number, int decimals) {
  text += os::ShortDecimal(number, decimals);
}

void AppendColor(std::string& text, const Color& color) {
  text += '#';
  for (const double part : {color.red, color.green, color.blue}) {
    const long value = std::lround(std::clamp(part, 0.0, 1.0) * 255);
    os::AppendHex(text, static_cast<unsigned char>(value));
  }
}

void AppendEscaped(std::string& text, std::wstring_view content) {
  for (const wchar_t character : content) {
    switch (character) {
      case L'&': text += "&amp;"; break;
      case L'<': text += "&lt;"; break;
      case L'>': text += "&gt;"; break;
      case L'"': text += "&quot;"; break;
      case L'\r':  // would be read as a line feed
        text += "&#13;";
        break;
      default: {
        const wchar_t kept = IsXmlCharacter(character) ? character : L'\xFFFD';
        os::AppendUtf8FromWide(text, {&kept, 1});
      }
    }
  }
}

void AppendPath(std::string& text, const Outline& outline) {
  const Point* point = outline.points.data();
  for (const Outline::Step step : outline.steps) {
    switch (step) {
      case Outline::Step::Move:
      case Outline::Step::Line:
        text += step == Outline::Step::Move ? 'M' : 'L';
        AppendPoint(text, *point++);
        break;
      case Outline::Step::Curve:
        text += 'C';
        AppendPoint(text, *point++);
        text += ' ';
        AppendPoint(text, *point++);
        text += ' ';
        AppendPoint(text, *point++);
        break;
      case Outline::Step::Close: text += 'Z'; break;
    }
  }
}

}  // namespace rastrel::render
