#include "rastrel/imports/cr2/template_reader.h"

#include <memory>
#include <utility>

#include "rastrel/imports/origin_keywords.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/xml/failure.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::imports {

using namespace std::string_view_literals;  // lengths of names are known beforehand

namespace {

template <typename Visit>
void ForEachNamed(const XmlNode& parent, std::wstring_view name, const Visit& visit) {
  for (XmlNode child = xml::FirstChild(parent); child; child = xml::NextSibling(child))
    if (xml::IsNamed(child, name)) visit(child);
}

}  // namespace

double TemplateReader::InRecords(double length) const {
  switch (m_Dialect.length) {
    case Cr2Length::AsWritten: return length;
    case Cr2Length::Inches: return length * 2.54;
    case Cr2Length::Millimetres: return length / 10.0;
  }
  return length;
}

double TemplateReader::LengthOf(const XmlNode& node, std::wstring_view attribute) const {
  double length = 0;
  AttributeDouble(node, attribute, length);
  return InRecords(length);
}

/// "hairline" is a width of its own, which no unit changes.
double TemplateReader::StrokeOf(const XmlNode& node) const {
  std::wstring stroke;
  AttributeString(node, L"stroke"sv, stroke);
  return stroke == L"hairline" ? LineStyleHairline : InRecords(os::DoubleFromText(stroke));
}

bool TemplateReader::ParsePlacementNode(const XmlNode& node, CR2_PLACEMENT& placement) const {
  double width = 0;
  double height = 0;
  if (!AttributeDouble(node, L"width"sv, width) || !AttributeDouble(node, L"height"sv, height))
    return false;
  std::wstring origin;
  AttributeString(node, L"origin"sv, origin);
  ReadOrigin(origin, Cr2Origins, placement.origin);
  placement.x = LengthOf(node, L"x"sv);
  placement.y = LengthOf(node, L"y"sv);
  placement.width = InRecords(width);
  placement.height = InRecords(height);
  std::wstring constrained;
  AttributeString(node, L"constrained_proportions"sv, constrained);
  placement.constrained = constrained == L"true";
  return true;
}

bool TemplateReader::ParsePlacementOf(const XmlNode& parent, CR2_PLACEMENT& placement) const {
  const XmlNode node = FirstChildNamed(parent, L"placement"sv);
  return node && ParsePlacementNode(node, placement);
}

void TemplateReader::ParseMarginsNode(const XmlNode& node, CR2_MARGINS& margins) const {
  double all = 0;
  const bool hasAll = AttributeDouble(node, L"margins"sv, all);
  const auto side = [&](std::wstring_view attribute) {
    double margin = all;
    if (!hasAll || m_Dialect.hasSideMarginsOverAll) AttributeDouble(node, attribute, margin);
    return InRecords(margin);
  };
  margins.left = side(L"margin-left"sv);
  margins.top = side(L"margin-top"sv);
  margins.right = side(L"margin-right"sv);
  margins.bottom = side(L"margin-bottom"sv);
}

bool TemplateReader::ParseTableSizeNode(const XmlNode& node) {
  if (!ParsePlacementNode(node, m_Document.tableSize.placement)) return false;
  ParseMarginsNode(node, m_Document.tableSize.margins);
  return true;
}

void TemplateReader::ParseSpacing(const XmlNode& node, CR2_TEMPLATE& plateTemplate) const {
  const bool hasSpacing = AttributeDouble(node, L"spacing"sv, plateTemplate.spacing);
  if (!m_Dialect.hasAxisSpacing) return;
  const double both = InRecords(plateTemplate.spacing);
  plateTemplate.xSpacing = hasSpacing ? both : LengthOf(node, L"Xspacing"sv);
  plateTemplate.ySpacing = hasSpacing ? both : LengthOf(node, L"Yspacing"sv);
}

bool TemplateReader::ParseTemplateNode(const XmlNode& node) {
  CR2_TEMPLATE& plateTemplate = m_Document.plateTemplate;
  ParseMarginsNode(node, plateTemplate.margins);
  ParseSpacing(node, plateTemplate);
  plateTemplate.strokeWidth = StrokeOf(node);
  if (!ParsePlacementOf(node, plateTemplate.placement)) return false;
  ParseColorsNode(node, plateTemplate.colors);
  return true;
}

bool TemplateReader::ParseCutLineNode(const XmlNode& node) {
  CR2_CUTLINE& line = m_Document.cutLine;
  line.strokeWidth = StrokeOf(node);
  std::wstring group;
  AttributeString(node, L"group"sv, group);
  line.group = (m_Dialect.hasAnyCaseGroup ? os::LowerAscii(group) : group) == L"true";
  if (!ParseCutLineNodeAttribute(node, line)) return false;
  if (!ParsePlacementOf(node, line.placement)) return false;
  ParseColorsNode(node, line.colors);
  line.present = 1.0;
  return true;
}

void TemplateReader::ParseGraphicsNode(const XmlNode& node) {
  ForEachNamed(node, L"graphic_location"sv,
               [&](const XmlNode& child) { ParseGraphicLocationNode(child); });
}

void TemplateReader::ParseGraphicLocationNode(const XmlNode& node) {
  CR2_GRAPHIC& graphic = m_Document.graphics.emplace_back();
  AttributeString(node, L"name"sv, graphic.name);
  NodeText(FirstChildNamed(node, L"file"sv), graphic.file);
}

bool TemplateReader::ParsePlatesNode(const XmlNode& node) {
  ForEachNamed(node, L"plate"sv, [&](const XmlNode& child) {
    if (IsTooLarge()) return;
    CR2_PLATE& plate = m_Document.plates.emplace_back();
    ParsePlateGraphicsNode(child, plate);
    ParsePlateTextNode(child, plate);
  });
  if (IsTooLarge()) Refuse(node);
  return !m_Document.plates.empty();
}

void TemplateReader::Refuse(const XmlNode& node) {
  Failure failure =
      FailureOf("the faces and styles that spans take from their fonts have more than " +
                std::to_string(MaxInheritedCharacters) + " characters together");
  failure.where = os::Utf8FromWide(m_Path);
  failure.line = NodeLine(node);
  xml::ReportXmlFailure(std::move(failure));
  m_Document = {};
}

void TemplateReader::ParsePlateGraphicsNode(const XmlNode& node, CR2_PLATE& plate) {
  for (XmlNode child = xml::FirstChild(node); child; child = xml::NextSibling(child)) {
    if (!xml::IsNamed(child, L"graphic_frame"sv)) continue;
    CR2_GRAPHIC_FRAME frame;
    if (!ParseGraphicFrameNode(child, frame)) return;
    plate.graphicFrames.push_back(std::move(frame));
  }
}

bool TemplateReader::ParseGraphicFrameNode(const XmlNode& node, CR2_GRAPHIC_FRAME& frame) {
  const XmlNode graphic = FirstChildNamed(node, L"graphic"sv);
  const bool isPlaced = ParsePlacementOf(node, frame.placement);
  if (!m_Dialect.keepsUnplacedFrames && !(graphic && isPlaced)) return false;
  NodeText(graphic, frame.graphic);
  ParseFrameVariables(node, frame);
  ParseColorsNode(node, frame.colors);
  return true;
}

void TemplateReader::ParsePlateTextNode(const XmlNode& node, CR2_PLATE& plate) {
  ForEachNamed(node, L"text_frame"sv, [&](const XmlNode& child) {
    CR2_TEXT_FRAME frame;
    if (ParseTextFrameNode(child, frame)) plate.textFrames.push_back(std::move(frame));
  });
}

bool TemplateReader::ParseTextFrameNode(const XmlNode& node, CR2_TEXT_FRAME& frame) {
  const bool isPlaced = ParsePlacementOf(node, frame.placement);
  if (!m_Dialect.keepsUnplacedFrames && !isPlaced) return false;
  ForEachNamed(node, L"font"sv, [&](const XmlNode& child) {
    ParsePlateFontTextNode(child, frame.texts.emplace_back());
  });
  return true;
}

void TemplateReader::ParsePlateFontTextNode(const XmlNode& node, CR2_TEXT& text) {
  ParseFontSpecNode(node, text.font);
  ForEachNamed(node, L"line"sv, [&](const XmlNode& child) {
    if (!IsTooLarge()) ParseTextLineNode(child, text.font, text.lines.emplace_back());
  });
}

CR2_SPAN TemplateReader::InheritedSpan(const CR2_FONT_SPEC& font) {
  m_InheritedCharacters += font.face.size() + font.style.size();
  if (IsTooLarge()) return {};
  return {.font = font, .text = {}};
}

void TemplateReader::ParseTextLineNode(const XmlNode& node, const CR2_FONT_SPEC& font,
                                       CR2_TEXT_LINE& line) {
  for (XmlNode child = xml::FirstChild(node); child; child = xml::NextSibling(child)) {
    if (!xml::IsNamed(child, L"span"sv)) continue;
    CR2_SPAN span = InheritedSpan(font);
    if (IsTooLarge()) return;
    ParseFontSpecNode(child, span.font);
    NodeText(child, span.text);
    line.spans.push_back(std::move(span));
  }
  if (!line.spans.empty()) return;
  CR2_SPAN whole = InheritedSpan(font);
  NodeText(node, whole.text);
  line.spans.push_back(std::move(whole));
}

bool TemplateReader::WalkColors(
    const XmlNode& node, const std::function<void(const std::wstring&, const CVKColor&)>& take) {
  std::wstring target;
  for (XmlNode child = xml::FirstChild(node); child; child = xml::NextSibling(child)) {
    if (!xml::IsNamed(child, L"color"sv)) continue;
    if (!AttributeString(child, L"target"sv, target)) return false;
    if (const std::optional<CVKColor> color = ParseColorNodeAttribute(child)) take(target, *color);
  }
  return true;
}

bool TemplateReader::ParseColorsNode(const XmlNode& node, CR2_COLORS& colors) {
  return WalkColors(node, [&](const std::wstring& target, const CVKColor& color) {
    if (target != L"stroke" && target != L"fill") return;
    (target == L"stroke" ? colors.stroke : colors.fill) = std::make_unique<CVKColor>(color);
    ColorTaken(color);
  });
}

std::int32_t JustificationCode(std::wstring_view keyword) {
  if (keyword == L"right"sv) return 1;
  return keyword == L"center"sv ? 2 : 0;
}

std::int32_t WholeNumberOf(const XmlNode& node, std::wstring_view attribute) {
  std::int32_t number = 0;
  AttributeInt(node, attribute, number);
  return number;
}

bool IsTemplatePath(const wchar_t* path, std::wstring_view extension) {
  constexpr std::size_t shortest = 5;
  if (path == nullptr) return false;
  const std::wstring_view text(path);
  return text.size() >= shortest && os::LowerAscii(text).ends_with(extension) && os::Exists(path);
}

}  // namespace rastrel::imports
