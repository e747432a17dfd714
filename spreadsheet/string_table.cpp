#include "spreadsheet/string_table.h"

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"
#include "spreadsheet/error.h"
#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

constexpr std::size_t EscapeSize = 7;  // "_x000D_"

void AddText(const XmlNode& element, std::string& text) {
  std::string scratch;
  text += StringTable::Unescaped(xml::RawTextBytes(element, scratch));
}

// The character of an escape that the text begins with; nothing if it begins with none.
std::optional<wchar_t> EscapedCharacter(std::string_view text) {
  if (text.size() < EscapeSize || !text.starts_with("_x") || text[6] != '_') return std::nullopt;
  const auto high = os::ByteFromHex(text[2], text[3]);
  const auto low = os::ByteFromHex(text[4], text[5]);
  if (!high || !low) return std::nullopt;
  return static_cast<wchar_t>(*high << 8 | *low);
}

}  // namespace

StringTable StringTable::Read(Parts& parts, const std::string& part, std::size_t maximumBytes) {
  StringTable table;
  if (part.empty()) return table;
  PathReader reader;
  reader.On({L"sst", L"si"}, [&](const XmlNode& node) {
    table.m_Text += TextOf(node);
    table.m_Ends.push_back(static_cast<std::uint32_t>(table.m_Text.size()));
    if (table.m_Ends.size() > limits::Strings)
      reader.Refuse("there are more shared strings than the limit of " +
                    std::to_string(limits::Strings));
    if (table.m_Text.size() > maximumBytes)
      reader.Refuse("the shared strings have more bytes than the limit of " +
                    std::to_string(maximumBytes));
  });
  const std::string path = OrThrow(parts.Fetch(part));
  if (!reader.ReadFrom(path, xml::XmlWhitespace::Keep)) parts.RefuseXml(part, "it can't be read");
  if (!reader.FoundRoot()) parts.Refuse(part, "its root element is not 'sst'");
  return table;
}

std::string StringTable::TextOf(const XmlNode& element) {
  std::string text;
  for (XmlNode child = xml::FirstChild(element); child; child = xml::NextSibling(child)) {
    const std::wstring_view name = xml::BaseName(child);
    if (name == L"t") AddText(child, text);
    if (name != L"r") continue;
    for (XmlNode part = xml::FirstChild(child); part; part = xml::NextSibling(part))
      if (xml::BaseName(part) == L"t") AddText(part, text);
  }
  return text;
}

std::string StringTable::Unescaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto character = EscapedCharacter(text.substr(at));
    if (!character) {
      result += text[at];
      continue;
    }
    at += EscapeSize - 1;
    if (*character == L'\r' && text.substr(at + 1).starts_with('\n')) continue;
    os::AppendUtf8FromWide(result, std::wstring_view(&*character, 1));
  }
  return result;
}

}  // namespace rastrel::spreadsheet
