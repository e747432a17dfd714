#include "cli/document/template_fields.h"

#include <algorithm>
#include <array>

namespace rastrel::cli {
namespace {

// Of the readers; docs/formats has them.
constexpr std::size_t MaximumAbbText = 255;
constexpr std::size_t MaximumCroLine = 100'000;
constexpr std::size_t MaximumArcText = 4096;

constexpr std::array<std::wstring_view, 19> NumberElements{
    L"WIDTH",   L"HEIGHT",  L"X",        L"Y",         L"XLOC",     L"YLOC",    L"CENTERX",
    L"CENTERY", L"RADIUS",  L"ROTATION", L"TEXTFRAME", L"DIAMETER", L"MARGINS", L"XMARGIN",
    L"YMARGIN", L"SPACING", L"XGAP",     L"YGAP",      L"TILT"};
constexpr std::array<std::string_view, 16> NumberAttributes{
    "size",        "width",     "height",    "x",        "y",        "line",
    "line_height", "margins",   "spacing",   "Xspacing", "Yspacing", "stroke",
    "UPPERXLOC",   "UPPERYLOC", "LOWERXLOC", "LOWERYLOC"};

bool IsCrownTrophy(TemplateFormat format) {
  return format == TemplateFormat::Cr2 || format == TemplateFormat::Zml;
}

bool IsIn(const std::vector<std::wstring_view>& path, std::wstring_view name) {
  return std::ranges::find(path, name) != path.end();
}

// Whether the place has letters of a plate; then `maximum` is set.
bool IsText(TemplateFormat format, const std::vector<std::wstring_view>& path,
            std::string_view attribute, std::size_t& maximum) {
  const std::wstring_view element = path.back();
  switch (format) {
    case TemplateFormat::Abb:
      maximum = MaximumAbbText;
      return element == L"TEXT" && attribute == "data";
    case TemplateFormat::Cro:
      maximum = MaximumCroLine;
      return element == L"TEXT" && attribute.empty();
    case TemplateFormat::Llx:
      maximum = MaximumArcText;
      return element == L"TEXT" && IsIn(path, L"ARCTEXT") && attribute.empty();
    case TemplateFormat::BrightStar: maximum = 0; return element == L"LINE" && attribute.empty();
    default: maximum = 0; return IsIn(path, L"line") && !IsIn(path, L"color") && attribute.empty();
  }
}

bool IsFile(TemplateFormat format, std::wstring_view element, std::string_view attribute) {
  if (!IsCrownTrophy(format)) return element == L"FILE" && attribute.empty();
  return (element == L"file" && attribute.empty()) || attribute == "file";
}

bool IsColor(TemplateFormat format, const std::vector<std::wstring_view>& path,
             std::string_view attribute) {
  if (!attribute.empty()) return false;
  if (IsCrownTrophy(format)) return path.back() == L"name" && IsIn(path, L"color");
  return path.back() == L"COLOR" || path.back() == L"TEXTCOLOR";
}

bool IsNumber(std::wstring_view element, std::string_view attribute) {
  if (attribute.empty()) return std::ranges::find(NumberElements, element) != NumberElements.end();
  return std::ranges::find(NumberAttributes, attribute) != NumberAttributes.end();
}

int Strictness(FieldKind kind) {
  switch (kind) {
    case FieldKind::File: return 4;
    case FieldKind::Number: return 3;
    case FieldKind::Color: return 2;
    case FieldKind::Value: return 1;
    case FieldKind::Text: break;
  }
  return 0;
}

}  // namespace

const char* NameOf(FieldKind kind) {
  switch (kind) {
    case FieldKind::Number: return "number";
    case FieldKind::Color: return "color";
    case FieldKind::File: return "file";
    case FieldKind::Value: return "value";
    case FieldKind::Text: break;
  }
  return "text";
}

FieldPlace PlaceOfField(TemplateFormat format, const std::vector<std::wstring_view>& path,
                        std::string_view attribute) {
  if (path.empty()) return {};
  std::size_t maximum = 0;
  if (IsText(format, path, attribute, maximum)) return {FieldKind::Text, maximum};
  if (IsFile(format, path.back(), attribute)) return {FieldKind::File, 0};
  if (IsColor(format, path, attribute)) return {FieldKind::Color, 0};
  if (IsNumber(path.back(), attribute)) return {FieldKind::Number, 0};
  return {};
}

void JoinPlace(TemplateField& field, const FieldPlace& place) {
  if (Strictness(place.kind) > Strictness(field.kind)) field.kind = place.kind;
  if (place.maximum > 0 && (field.maximum == 0 || place.maximum < field.maximum))
    field.maximum = place.maximum;
}

}  // namespace rastrel::cli
