#include "rastrel/imports/llx_file_import.h"

#include <string>
#include <string_view>

#include "rastrel/imports/file_extension.h"
#include "rastrel/imports/origin_keywords.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace imports = rastrel::imports;

namespace {

using namespace std::string_view_literals;  // lengths of names are known beforehand

using rastrel::xml::FirstChild;
using rastrel::xml::IsNamed;
using rastrel::xml::NextSibling;

void ReadOriginNode(const XmlNode& node, const imports::OriginRules& rules, std::int32_t& origin) {
  std::wstring text;
  if (NodeText(node, text)) imports::ReadOrigin(text, rules, origin);
}

/// An element without text leaves the value as it is, which is left unless it was set before.
void ReadJustification(const XmlNode& node, std::int32_t& justify) {
  std::wstring text;
  if (!NodeText(node, text)) return;
  justify = LLXJUSTIFY_CENTER;
  if (text == L"left"sv) justify = LLXJUSTIFY_LEFT;
  if (text == L"right"sv) justify = LLXJUSTIFY_RIGHT;
}

template <typename Record>
std::vector<std::unique_ptr<Record>> CopyOf(const std::vector<std::unique_ptr<Record>>& records) {
  std::vector<std::unique_ptr<Record>> copies;
  copies.reserve(records.size());
  for (const auto& record : records) copies.push_back(std::make_unique<Record>(*record));
  return copies;
}

}  // namespace

CLLXFileImport::CLLXFileImport(const wchar_t* path, FILE* /*log*/) { m_bParsed = ParseFile(path); }

CLLXFileImport::CLLXFileImport(const CLLXFileImport& other) { *this = other; }

CLLXFileImport& CLLXFileImport::operator=(const CLLXFileImport& other) {
  if (this == &other) return *this;
  m_bParsed = other.m_bParsed;
  m_Reserved1 = other.m_Reserved1;
  m_Reserved2 = other.m_Reserved2;
  m_Width = other.m_Width;
  m_Height = other.m_Height;
  m_Origin = other.m_Origin;
  m_Graphics = CopyOf(other.m_Graphics);
  m_ArcTexts = CopyOf(other.m_ArcTexts);
  return *this;
}

CLLXFileImport::~CLLXFileImport() = default;

bool CLLXFileImport::ParseFile(const wchar_t* path) {
  if (!imports::IsFileOfType(path, {L"llx"})) return false;
  const XmlNode root = LoadXmlFile(path);
  const XmlNode plate = FirstChildNamed(FirstChildNamed(root, L"ENGRAVINGTEMPLATE"), L"PLATE");
  if (!plate) return false;
  for (XmlNode child = FirstChild(plate); child; child = NextSibling(child)) ParsePlateChild(child);
  return true;
}

void CLLXFileImport::ParsePlateChild(const XmlNode& node) {
  if (IsNamed(node, L"WIDTH"sv)) NodeDouble(node, m_Width);
  if (IsNamed(node, L"HEIGHT"sv)) NodeDouble(node, m_Height);
  if (IsNamed(node, L"ORIGIN"sv)) ReadOriginNode(node, imports::LlxPlateOrigins, m_Origin);
  if (IsNamed(node, L"GRAPHIC"sv))
    ParseGraphicNode(node, *m_Graphics.emplace_back(std::make_unique<LLXGraphic>()));
  if (IsNamed(node, L"ARCTEXT"sv))
    ParseArcTextNode(node, *m_ArcTexts.emplace_back(std::make_unique<LLXArcText>()));
}

void CLLXFileImport::ParseGraphicNode(const XmlNode& node, LLXGraphic& graphic) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"FILE"sv)) NodeText(child, graphic.file);
    if (IsNamed(child, L"ORIGIN"sv))
      ReadOriginNode(child, imports::LlxGraphicOrigins, graphic.origin);
    if (IsNamed(child, L"X"sv)) NodeFloat(child, graphic.x);
    if (IsNamed(child, L"Y"sv)) NodeFloat(child, graphic.y);
    if (IsNamed(child, L"WIDTH"sv)) NodeFloat(child, graphic.width);
    if (IsNamed(child, L"HEIGHT"sv)) NodeFloat(child, graphic.height);
    if (IsNamed(child, L"ROTATION"sv)) NodeFloat(child, graphic.rotation);
  }
}

void CLLXFileImport::ParseArcTextNode(const XmlNode& node, LLXArcText& text) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"CENTERX"sv)) NodeFloat(child, text.centerX);
    if (IsNamed(child, L"CENTERY"sv)) NodeFloat(child, text.centerY);
    if (IsNamed(child, L"RADIUS"sv)) NodeFloat(child, text.radius);
    if (IsNamed(child, L"ROTATION"sv)) NodeFloat(child, text.rotation);
    if (IsNamed(child, L"HEIGHT"sv)) NodeFloat(child, text.height);
    if (IsNamed(child, L"FONT"sv)) NodeText(child, text.font);
    if (IsNamed(child, L"JUSTIFY"sv)) ReadJustification(child, text.justify);
    if (IsNamed(child, L"TEXT"sv)) NodeText(child, text.text);
  }
}
