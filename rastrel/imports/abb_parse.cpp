#include "rastrel/imports/abb_parse.h"

#include <array>
#include <string>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/imports/xml_layer.h"
#include "rastrel/imports/xml_walk.h"

namespace rastrel::imports {
namespace {

using Plates = std::vector<std::unique_ptr<tagABB_PLATE_DATA>>;

/// Reads plates of one document. Each function is false when a text does not fit its field, which
/// ends the document.
class AbbReader {
 public:
  AbbReader(std::wstring_view path, Plates& plates) : m_Path(path), m_Plates(plates) {}

  bool ReadTemplate(const XmlNode& node);
  [[nodiscard]] bool HasPlates() const { return m_HasPlates; }

 private:
  bool ReadPlate(const XmlNode& node);
  bool ReadText(const XmlNode& node, tagABB_PLATE_DATA& record);
  bool ReadDrillPoint(const XmlNode& node, tagABB_PLATE_DATA& record);
  bool TextOf(const XmlNode& node, std::wstring_view name, std::wstring& field);
  bool AttributeOf(const XmlNode& node, std::wstring_view name, std::wstring& field);
  bool Keep(std::wstring_view name, std::wstring& field);

  std::wstring_view m_Path;
  Plates& m_Plates;
  bool m_HasPlates = false;
  std::wstring m_Value;
};

/// The value that was read last. Records are many and texts short, so a record holds no more than
/// its characters.
bool AbbReader::Keep(std::wstring_view name, std::wstring& field) {
  std::array<wchar_t, AbbTextSize> bounded;
  if (!BoundedCopy(bounded, m_Value, name, m_Path)) return false;
  field = bounded.data();
  return true;
}

/// The node's text, if it has that name and a text.
bool AbbReader::TextOf(const XmlNode& node, std::wstring_view name, std::wstring& field) {
  if (!NodeNameIs(node, name) || !NodeText(node, m_Value)) return true;
  return Keep(name, field);
}

bool AbbReader::AttributeOf(const XmlNode& node, std::wstring_view name, std::wstring& field) {
  if (!AttributeString(node, name, m_Value)) return true;
  return Keep(name, field);
}

void NumberOf(const XmlNode& node, std::wstring_view name, double& value) {
  if (NodeNameIs(node, name)) NodeDouble(node, value);
}

bool AbbReader::ReadTemplate(const XmlNode& node) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    // The plates stand beside the element that announces them, never inside it.
    if (NodeNameIs(child, L"PLATES")) m_HasPlates = true;
    if (NodeNameIs(child, L"PLATE") && !ReadPlate(child)) return false;
  }
  return true;
}

bool AbbReader::ReadPlate(const XmlNode& node) {
  auto record = std::make_unique<tagABB_PLATE_DATA>();
  tagABB_PLATE& plate = *record->plates.emplace_back(std::make_unique<tagABB_PLATE>());
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"COLOR", plate.color) || !TextOf(child, L"TOOLNAME", plate.toolName) ||
        !TextOf(child, L"TEXTCOLOR", plate.textColor))
      return false;
    NumberOf(child, L"WIDTH", plate.width);
    NumberOf(child, L"HEIGHT", plate.height);
    if (NodeNameIs(child, L"TEXTFRAME")) NodeInt(child, plate.textFrame);
    if (NodeNameIs(child, L"TEXT") && !ReadText(child, *record)) return false;
    if (NodeNameIs(child, L"DRILLPOINT") && !ReadDrillPoint(child, *record)) return false;
  }
  m_Plates.push_back(std::move(record));
  return true;
}

bool AbbReader::ReadText(const XmlNode& node, tagABB_PLATE_DATA& record) {
  tagTEXTDATA& text = *record.texts.emplace_back(std::make_unique<tagTEXTDATA>());
  AttributeInt(node, L"line", text.line);
  if (!AttributeOf(node, L"data", text.data)) return false;
  if (!text.data.empty()) record.plates.front()->hasText = 1;
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"TOOLNAME", text.toolName)) return false;
    if (!NodeNameIs(child, L"FONT")) continue;
    if (!AttributeOf(child, L"name", text.fontName)) return false;
    AttributeDouble(child, L"size", text.size);
  }
  return true;
}

bool AbbReader::ReadDrillPoint(const XmlNode& node, tagABB_PLATE_DATA& record) {
  tagDRILLPOINT& point = *record.drillPoints.emplace_back(std::make_unique<tagDRILLPOINT>());
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"COLOR", point.color) || !TextOf(child, L"TOOLNAME", point.toolName))
      return false;
    NumberOf(child, L"XLOC", point.x);
    NumberOf(child, L"YLOC", point.y);
    NumberOf(child, L"DIAMETER", point.diameter);
  }
  return true;
}

}  // namespace

bool ParseAbbPlates(const wchar_t* path, Plates& plates) {
  if (!IsFileOfType(path, {L"xml"})) return false;
  const XmlNode root = LoadXmlFile(path);
  if (!root) return false;
  AbbReader reader(path, plates);
  for (XmlNode child = FirstChild(root); child; child = NextSibling(child)) {
    if (!NodeNameIs(child, L"ENGRAVINGTEMPLATE") || reader.ReadTemplate(child)) continue;
    plates.clear();
    return false;
  }
  return reader.HasPlates();
}

}  // namespace rastrel::imports
