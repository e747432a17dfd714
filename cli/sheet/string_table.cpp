#include "cli/sheet/string_table.h"

#include "cli/sheet/xml_reading.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli::sheet {
namespace {

void AddText(const XmlNode& element, std::string& text) {
  std::string scratch;
  text += StringTable::Unescaped(xml::RawTextBytes(element, scratch));
}

int HexValue(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) {
    const int one = digit >= '0' && digit <= '9'   ? digit - '0'
                    : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                    : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
                                                   : -1;
    if (one < 0) return -1;
    value = value * 16 + one;
  }
  return value;
}

}  // namespace

StringTable StringTable::Read(Parts& parts, const std::string& part, std::size_t mostBytes) {
  StringTable table;
  if (part.empty()) return table;
  PathReader reader;
  reader.On({L"sst", L"si"}, [&](const XmlNode& node) {
    table.m_Text += TextOf(node);
    table.m_Ends.push_back(static_cast<std::uint32_t>(table.m_Text.size()));
    if (table.m_Ends.size() > limits::Strings)
      reader.Refuse(L"there are more shared strings than the limit of " +
                    std::to_wstring(limits::Strings));
    if (table.m_Text.size() > mostBytes)
      reader.Refuse(L"the shared strings have more bytes than the limit of " +
                    std::to_wstring(mostBytes));
  });
  const std::string path = parts.Fetch(part);
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
  constexpr std::size_t escapeSize = 7;  // "_x000D_"
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view escape = text.substr(at, escapeSize);
    const bool isOne = escape.size() == escapeSize && escape.starts_with("_x") && escape[6] == '_';
    const int value = isOne ? HexValue(escape.substr(2, 4)) : -1;
    if (value < 0) {
      result += text[at];
      continue;
    }
    const auto character = static_cast<wchar_t>(value);
    at += escapeSize - 1;
    if (character == L'\r' && text.substr(at + 1).starts_with('\n')) continue;
    os::AppendUtf8FromWide(result, std::wstring_view(&character, 1));
  }
  return result;
}

}  // namespace rastrel::cli::sheet
