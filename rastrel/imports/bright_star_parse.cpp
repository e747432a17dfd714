#include "rastrel/imports/bright_star_parse.h"

#include <array>
#include <string>
#include <string_view>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::imports {
namespace {

using namespace std::string_view_literals;  // lengths of names are known beforehand

using xml::FirstChild;
using xml::IsNamed;
using xml::NextSibling;

/// Reads templates of one document. Each function is false when a text does not fit its field,
/// which ends the document.
class BrightStarReader {
 public:
  explicit BrightStarReader(std::wstring_view path) : m_Path(path) {}

  bool ParseEngravingTemplateNode(const XmlNode& node, tagBRIGHT_STAR_DATA& record);

 private:
  bool ParseEngravingTemplateTextFrameNode(const XmlNode& node, tagTEXTFRAME& frame);
  bool ParseTextFrameAttribute(const XmlNode& node, tagTEXTFRAME& frame);
  bool ParseTextFrameFontAttribute(const XmlNode& node, tagTEXTFRAME& frame);
  bool AttributeOf(const XmlNode& node, std::wstring_view name, std::wstring& field);
  bool Keep(std::wstring_view name, std::wstring& field);

  std::wstring_view m_Path;
  std::wstring m_Value;
};

/// The value that was read last. A record holds no more than its characters.
bool BrightStarReader::Keep(std::wstring_view name, std::wstring& field) {
  std::array<wchar_t, BrightStarTextSize> bounded;
  if (!BoundedCopy(bounded, m_Value, name, m_Path)) return false;
  field = m_Value;
  return true;
}

bool BrightStarReader::AttributeOf(const XmlNode& node, std::wstring_view name,
                                   std::wstring& field) {
  return !AttributeString(node, name, m_Value) || Keep(name, field);
}

bool BrightStarReader::ParseEngravingTemplateNode(const XmlNode& node,
                                                  tagBRIGHT_STAR_DATA& record) {
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"WIDTH"sv)) NodeDouble(child, record.width);
    if (IsNamed(child, L"HEIGHT"sv)) NodeDouble(child, record.height);
    if (IsNamed(child, L"ORIGIN"sv) && NodeText(child, m_Value) && !Keep(L"ORIGIN", record.origin))
      return false;
    if (IsNamed(child, L"TEXTFRAME"sv) &&
        !ParseEngravingTemplateTextFrameNode(
            child, *record.textFrames.emplace_back(std::make_unique<tagTEXTFRAME>())))
      return false;
  }
  return true;
}

bool BrightStarReader::ParseEngravingTemplateTextFrameNode(const XmlNode& node,
                                                           tagTEXTFRAME& frame) {
  if (!ParseTextFrameAttribute(node, frame)) return false;
  for (XmlNode child = FirstChild(node); child; child = NextSibling(child)) {
    if (IsNamed(child, L"FONT"sv) && !ParseTextFrameFontAttribute(child, frame)) return false;
    // A line without text is a blank line between its neighbours.
    if (IsNamed(child, L"LINE"sv)) NodeText(child, frame.lines.emplace_back());
  }
  return true;
}

bool BrightStarReader::ParseTextFrameAttribute(const XmlNode& node, tagTEXTFRAME& frame) {
  AttributeDouble(node, L"UPPERXLOC"sv, frame.upperX);
  AttributeDouble(node, L"UPPERYLOC"sv, frame.upperY);
  AttributeDouble(node, L"LOWERXLOC"sv, frame.lowerX);
  AttributeDouble(node, L"LOWERYLOC"sv, frame.lowerY);
  return AttributeOf(node, L"compression"sv, frame.compression);
}

bool BrightStarReader::ParseTextFrameFontAttribute(const XmlNode& node, tagTEXTFRAME& frame) {
  AttributeDouble(node, L"size"sv, frame.size);
  return AttributeOf(node, L"name"sv, frame.fontName) &&
         AttributeOf(node, L"justification"sv, frame.justification);
}

}  // namespace

bool ParseBrightStar(const wchar_t* path,
                     std::vector<std::unique_ptr<tagBRIGHT_STAR_DATA>>& records) {
  if (!IsFileOfType(path, {L"xml"})) return false;
  const XmlNode root = LoadXmlFile(path);
  if (!root) return false;
  BrightStarReader reader(path);
  for (XmlNode child = FirstChild(root); child; child = NextSibling(child)) {
    if (!IsNamed(child, L"ENGRAVINGTEMPLATE"sv)) continue;
    auto record = std::make_unique<tagBRIGHT_STAR_DATA>();
    if (!reader.ParseEngravingTemplateNode(child, *record)) {
      records.clear();
      return false;
    }
    records.push_back(std::move(record));
  }
  return true;
}

}  // namespace rastrel::imports
