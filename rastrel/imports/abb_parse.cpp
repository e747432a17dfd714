#include "rastrel/imports/abb_parse.h"

#include <array>
#include <string>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::imports {
namespace {

using namespace std::string_view_literals;  // lengths of names are known beforehand

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
  if (m_Value.size() < AbbTextSize) {
    field = m_Value;
    return true;
  }
  std::array<wchar_t, AbbTextSize> bounded;
  return BoundedCopy(bounded, m_Value, name, m_Path);
}

/// The node's text, if it has that name and a text.
bool AbbReader::TextOf(const XmlNode& node, std::wstring_view name, std::wstring& field) {
  if (!IsNamed(node, name) || !NodeText(node, m_Value)) return true;
  return Keep(name, field);
}

bool AbbReader::AttributeOf(const XmlNode& node, std::wstring_view name, std::wstring& field) {
  if (!AttributeString(node, name, m_Value)) return true;
  return Keep(name, field);
}

void NumberOf(const XmlNode& node, std::wstring_view name, double& value) {
  if (IsNamed(node, name)) NodeDouble(node, value);
}

bool AbbReader::ReadTemplate(const XmlNode& node) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    // The plates are siblings of the element that announces them, never inside it.
    if (IsNamed(child, L"PLATES"sv)) m_HasPlates = true;
    if (IsNamed(child, L"PLATE"sv) && !ReadPlate(child)) return false;
  }
  return true;
}

bool AbbReader::ReadPlate(const XmlNode& node) {
  auto record = std::make_unique<tagABB_PLATE_DATA>();
  tagABB_PLATE& plate = *record->plates.emplace_back(std::make_unique<tagABB_PLATE>());
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"COLOR"sv, plate.color) || !TextOf(child, L"TOOLNAME"sv, plate.toolName) ||
        !TextOf(child, L"TEXTCOLOR"sv, plate.textColor))
      return false;
    NumberOf(child, L"WIDTH"sv, plate.width);
    NumberOf(child, L"HEIGHT"sv, plate.height);
    if (IsNamed(child, L"TEXTFRAME"sv)) NodeInt(child, plate.textFrame);
    if (IsNamed(child, L"TEXT"sv) && !ReadText(child, *record)) return false;
    if (IsNamed(child, L"DRILLPOINT"sv) && !ReadDrillPoint(child, *record)) return false;
  }
  m_Plates.push_back(std::move(record));
  return true;
}

bool AbbReader::ReadText(const XmlNode& node, tagABB_PLATE_DATA& record) {
  tagTEXTDATA& text = *record.texts.emplace_back(std::make_unique<tagTEXTDATA>());
  AttributeInt(node, L"line"sv, text.line);
  if (!AttributeOf(node, L"data"sv, text.data)) return false;
  if (!text.data.empty()) record.plates.front()->hasText = 1;
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"TOOLNAME"sv, text.toolName)) return false;
    if (!IsNamed(child, L"FONT"sv)) continue;
    if (!AttributeOf(child, L"name"sv, text.fontName)) return false;
    AttributeDouble(child, L"size"sv, text.size);
  }
  return true;
}

bool AbbReader::ReadDrillPoint(const XmlNode& node, tagABB_PLATE_DATA& record) {
  tagDRILLPOINT& point = *record.drillPoints.emplace_back(std::make_unique<tagDRILLPOINT>());
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (!TextOf(child, L"COLOR"sv, point.color) || !TextOf(child, L"TOOLNAME"sv, point.toolName))
      return false;
    NumberOf(child, L"XLOC"sv, point.x);
    NumberOf(child, L"YLOC"sv, point.y);
    NumberOf(child, L"DIAMETER"sv, point.diameter);
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
    if (!IsNamed(child, L"ENGRAVINGTEMPLATE"sv) || reader.ReadTemplate(child)) continue;
    plates.clear();
    return false;
  }
  return reader.HasPlates();
}

}  // namespace rastrel::imports
