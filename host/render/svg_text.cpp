#include "host/render/svg_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "rastrel/platform/os/text.h"

namespace rastrel::render {

namespace {

constexpr double MillimetresPerPoint = 25.4 / 72;

void AppendFixed(std::string& text, double number, int digits) {
  char buffer[64];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, digits);
  std::string_view written(buffer, static_cast<std::size_t>(end.ptr - buffer));
  if (end.ec != std::errc()) written = "0";
  if (written.find('.') != std::string_view::npos) {
    written = written.substr(0, written.find_last_not_of('0') + 1);
    if (written.back() == '.') written.remove_suffix(1);
  }
  text += written == "-0" ? "0" : written;
}

// XML 1.0, production 2.
bool IsXmlCharacter(wchar_t character) {
  const auto code = static_cast<unsigned long>(character);
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

void AppendPoint(std::string& text, const Point& point) {
  AppendMillimetres(text, point.x);
  text += ' ';
  AppendMillimetres(text, point.y);
}

}  // namespace

void AppendMillimetres(std::string& text, double points) {
  AppendFixed(text, points * MillimetresPerPoint, 4);
}

void AppendNumber(std::string& text, double number) { AppendFixed(text, number, 6); }

void AppendColor(std::string& text, const Color& color) {
  constexpr char digits[] = "0123456789abcdef";
  text += '#';
  for (const double part : {color.red, color.green, color.blue}) {
    const auto value = static_cast<unsigned>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
    text += digits[value / 16];
    text += digits[value % 16];
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
      case Outline::Step::kMove:
      case Outline::Step::kLine:
        text += step == Outline::Step::kMove ? 'M' : 'L';
        AppendPoint(text, *point++);
        break;
      case Outline::Step::kCurve:
        text += 'C';
        AppendPoint(text, *point++);
        text += ' ';
        AppendPoint(text, *point++);
        text += ' ';
        AppendPoint(text, *point++);
        break;
      case Outline::Step::kClose: text += 'Z'; break;
    }
  }
}

}  // namespace rastrel::render
