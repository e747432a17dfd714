#include "rastrel/imports/cro_file_import.h"

#include <string_view>
#include <utility>

#include "rastrel/imports/file_extension.h"
#include "rastrel/imports/origin_keywords.h"
#include "rastrel/imports/refused_text.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace imports = rastrel::imports;

namespace {

using namespace std::string_view_literals;  // lengths of names are known beforehand

using rastrel::xml::FirstChild;
using rastrel::xml::IsNamed;
using rastrel::xml::NextSibling;

/// Single precision, as the heights themselves are.
constexpr float CentimetresPerInch = 2.54F;

// The values of a tilting tool's path that its element does not give.
constexpr double DefaultTiltLeftBottom = 0.254;
constexpr double DefaultTiltTopRight = 0.762;

/// Whether the attribute `yes` is a number other than 0. Without it the flag is off.
bool IsYes(const XmlNode& node) {
  std::int32_t yes = 0;
  AttributeInt(node, L"yes"sv, yes);
  return yes != 0;
}

void ReadOriginNode(const XmlNode& node, std::int32_t& origin) {
  std::wstring text;
  if (NodeText(node, text)) imports::ReadOrigin(text, imports::CroOrigins, origin);
}

/// The children that graphics and their common values share.
void ReadGraphicPlace(const XmlNode& node, CROGraphic& graphic) {
  if (IsNamed(node, L"WIDTH"sv)) NodeDouble(node, graphic.width);
  if (IsNamed(node, L"HEIGHT"sv)) NodeDouble(node, graphic.height);
  if (IsNamed(node, L"ORIGIN"sv)) ReadOriginNode(node, graphic.origin);
  if (IsNamed(node, L"XLOC"sv)) NodeDouble(node, graphic.x);
  if (IsNamed(node, L"YLOC"sv)) NodeDouble(node, graphic.y);
}

/// An element without text is an empty line, so that the lines after it keep their numbers.
void AddText(const XmlNode& node, CStringArray& texts) {
  CString text;
  NodeText(node, text);
  texts.Add(std::move(text));
}

template <typename Record>
Record* At(const std::vector<std::unique_ptr<Record>>& records, std::size_t place) {
  return place < records.size() ? records[place].get() : nullptr;
}

template <typename Record>
Record* First(const std::vector<std::unique_ptr<Record>>& records, std::size_t& place) {
  place = 0;
  return At(records, place);
}

template <typename Record>
Record* Next(const std::vector<std::unique_ptr<Record>>& records, std::size_t& place) {
  if (place < records.size()) ++place;
  return At(records, place);
}

}  // namespace

CCROFileImport::CCROFileImport(const wchar_t* path, FILE* /*log*/) { m_bParsed = ParseFile(path); }

CCROFileImport::~CCROFileImport() = default;

bool CCROFileImport::ParseFile(const wchar_t* path) {
  if (!imports::IsFileOfType(path, {L"cro", L"crx", L"cml", L"xml"})) return false;
  const XmlNode root = imports::LoadRepairableXmlFile(path, imports::CroRepair);
  if (!IsNamed(root, L"ENGRAVINGTEMPLATE"sv)) return false;
  for (XmlNode child = FirstChild(root); child; child = NextSibling(child))
    ParseTemplateChild(child);
  if (!m_bMetric) return true;
  // The heights on single plates stay as they are: hosts that lay plates out expect them so.
  for (const auto& text : m_TextOverrides) text->height /= CentimetresPerInch;
  return true;
}

void CCROFileImport::ParseTemplateChild(const XmlNode& node) {
  if (IsNamed(node, L"TEMPLATENAME"sv)) NodeText(node, m_TemplateName);
  if (IsNamed(node, L"DRIVER"sv)) ParseDriverNode(node);
  if (IsNamed(node, L"TEMPLATESIZE"sv)) ParseTemplateSize(node);
  if (IsNamed(node, L"ROTATION"sv)) ParseRotationAngle(node);
  if (IsNamed(node, L"TILTTOOLPATH"sv)) ParseTiltToolPath(node);
  if (IsNamed(node, L"TEMPLATEORIGIN"sv)) ReadOriginNode(node, m_Origin);
  if (IsNamed(node, L"TEMPLATEGRAPHICS"sv)) ParseTemplateGraphics(node);
  if (IsNamed(node, L"TEMPLATEGRAPHIC"sv))
    ParseTemplateGraphic(node,
                         *m_Graphics.emplace_back(std::make_unique<CROGraphic>(DefaultGraphic())));
  if (IsNamed(node, L"TEMPLATETEXT"sv))
    ParseTemplateText(node, *m_TextOverrides.emplace_back(std::make_unique<CROTextOverride>()));
  if (IsNamed(node, L"VERTICALSPACING"sv)) ParseVerticalSpacingNode(node);
  if (IsNamed(node, L"PLATES"sv)) ParsePlatesNode(node);
  if (IsNamed(node, L"SHOWPRINTDIALOG"sv)) ParseShowPrintDlgNodeAttribute(node);
  if (IsNamed(node, L"PRINTDIRECT"sv)) ParsePrintDirectNodeAttribute(node);
  if (IsNamed(node, L"METRIC"sv)) ParseMetricNodeAttribute(node);
}

void CCROFileImport::ParseDriverNode(const XmlNode& node) {
  NodeText(node, m_DriverName);
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!IsNamed(child, L"Setting"sv)) continue;
    CRODriverSetting setting;
    if (AttributeString(child, L"Header"sv, setting.header) &&
        AttributeString(child, L"Name"sv, setting.name) &&
        AttributeString(child, L"Value"sv, setting.value))
      m_DriverSettings.push_back(std::move(setting));
  }
}

void CCROFileImport::ParseTemplateSize(const XmlNode& node) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"WIDTH"sv)) NodeDouble(child, m_Width);
    if (IsNamed(child, L"HEIGHT"sv)) NodeDouble(child, m_Height);
    if (!IsNamed(child, L"USETEMPLATEBLANKSIZE"sv)) continue;
    std::wstring text;
    NodeText(child, text);
    m_bUseTemplateBlankSize = text == L"TRUE"sv;
  }
}

void CCROFileImport::ParseRotationAngle(const XmlNode& node) { NodeDouble(node, m_Rotation); }

void CCROFileImport::ParseTiltToolPath(const XmlNode& node) {
  m_TiltHorizontal = 1;
  m_TiltGroove = 0;
  m_TiltRelative = 0;
  m_TiltLeftBottom = DefaultTiltLeftBottom;
  m_TiltTopRight = DefaultTiltTopRight;
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"HORIZONTAL"sv)) NodeInt(child, m_TiltHorizontal);
    if (IsNamed(child, L"GROOVE"sv)) NodeInt(child, m_TiltGroove);
    if (IsNamed(child, L"RELATIVE"sv)) NodeInt(child, m_TiltRelative);
    if (IsNamed(child, L"LBVALUE"sv)) NodeDouble(child, m_TiltLeftBottom);
    if (IsNamed(child, L"TRVALUE"sv)) NodeDouble(child, m_TiltTopRight);
  }
}

CROGraphic CCROFileImport::DefaultGraphic() const {
  CROGraphic graphic;
  graphic.origin = m_GraphicsOrigin;
  graphic.x = m_GraphicsX;
  graphic.y = m_GraphicsY;
  graphic.width = m_GraphicsWidth;
  graphic.height = m_GraphicsHeight;
  return graphic;
}

void CCROFileImport::ParseTemplateGraphics(const XmlNode& node) {
  CROGraphic graphic = DefaultGraphic();
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child))
    ReadGraphicPlace(child, graphic);
  m_GraphicsOrigin = graphic.origin;
  m_GraphicsX = graphic.x;
  m_GraphicsY = graphic.y;
  m_GraphicsWidth = graphic.width;
  m_GraphicsHeight = graphic.height;
}

void CCROFileImport::ParseTemplateGraphic(const XmlNode& node, CROGraphic& graphic) {
  AttributeString(node, L"name"sv, graphic.name);
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"name"sv)) NodeText(child, graphic.name);
    if (IsNamed(child, L"FILE"sv)) NodeText(child, graphic.file);
    ReadGraphicPlace(child, graphic);
  }
}

void CCROFileImport::ParseTemplateText(const XmlNode& node, CROTextOverride& text) {
  AttributeInt(node, L"line"sv, text.line);
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"FONT"sv)) NodeText(child, text.font);
    if (IsNamed(child, L"HEIGHT"sv)) NodeFloat(child, text.height);
  }
}

void CCROFileImport::ParseVerticalSpacingNode(const XmlNode& node) {
  m_HasVerticalSpacing = 1;
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child))
    if (IsNamed(child, L"MARGINS"sv)) NodeFloat(child, m_Margins);
}

void CCROFileImport::ParsePlatesNode(const XmlNode& node) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child))
    if (IsNamed(child, L"PLATE"sv))
      ParsePlateNode(child, static_cast<std::int32_t>(m_PlateText.size()));
}

void CCROFileImport::ParsePlateNode(const XmlNode& node, std::int32_t plate) {
  auto texts = std::make_unique<CStringArray>();
  auto graphics = std::make_unique<CStringArray>();
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"TEXT"sv)) AddText(child, *texts);
    if (IsNamed(child, L"TEMPLATETEXT"sv)) {
      auto text = std::make_unique<CROTextOverride>();
      ParseTemplateText(child, *text);
      m_PlateOverrides.push_back({.plate = plate, .text = std::move(text)});
    }
    if (IsNamed(child, L"GRAPHIC"sv)) AddText(child, *graphics);
  }
  m_PlateText.push_back(std::move(texts));
  m_PlateGraphics.push_back(std::move(graphics));
}

void CCROFileImport::ParseShowPrintDlgNodeAttribute(const XmlNode& node) {
  m_bShowPrintDialog = IsYes(node);
}

void CCROFileImport::ParsePrintDirectNodeAttribute(const XmlNode& node) {
  m_bPrintDirect = IsYes(node);
}

void CCROFileImport::ParseMetricNodeAttribute(const XmlNode& node) { m_bMetric = IsYes(node); }

CStringArray* CCROFileImport::GetFirstPlate() { return First(m_PlateText, m_Plate); }

CStringArray* CCROFileImport::GetNextPlate() { return Next(m_PlateText, m_Plate); }

CStringArray* CCROFileImport::GetFirstPlateGraphics() {
  return First(m_PlateGraphics, m_PlateGraphic);
}

CStringArray* CCROFileImport::GetNextPlateGraphics() {
  return Next(m_PlateGraphics, m_PlateGraphic);
}

CStringArray* CCROFileImport::GetCurrentPlateGraphics() const {
  return At(m_PlateGraphics, m_PlateGraphic);
}

CROTextOverride* CCROFileImport::GetFirstTextLineOverride() {
  return First(m_TextOverrides, m_TextOverride);
}

CROTextOverride* CCROFileImport::GetNextTextLineOverride() {
  return Next(m_TextOverrides, m_TextOverride);
}

CROGraphic* CCROFileImport::GetGraphicDesc(const CString& name) const {
  for (const auto& graphic : m_Graphics)
    if (graphic->name == name) return graphic.get();
  return nullptr;
}
