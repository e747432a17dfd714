#include "rastrel/readers/charts.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/readers/finger_size.h"
#include "rastrel/xml/layer.h"

namespace {

using rastrel::imports::BoundedCopy;

// Hosts never name a chart in fewer characters: ".xml" alone has four.
constexpr std::size_t ShortestPath = 5;

std::wstring_view TextOf(const wchar_t* question) {
  return question == nullptr ? std::wstring_view() : question;
}

// The chart's root; none if it can't be had.
XmlNode LoadChart(const wchar_t* path) {
  if (TextOf(path).size() < ShortestPath || !rastrel::os::Exists(path)) return {};
  return LoadXmlFile(path);
}

// The entries of that name in the first list of that name.
std::vector<XmlNode> Entries(const XmlNode& root, std::wstring_view list, std::wstring_view entry) {
  const XmlNode first = FirstChildNamed(root, list);
  return first ? ChildrenNamed(first, entry) : std::vector<XmlNode>();
}

std::vector<XmlNode> ChildrenOf(const XmlNode& node) {
  int count = 0;
  return NodeChildren(node, count);
}

bool HasAttribute(const XmlNode& node, std::wstring_view name, std::wstring_view value) {
  std::wstring own;
  return AttributeString(node, name, own) && own == value;
}

struct TrademarkEntry {
  explicit TrademarkEntry(const XmlNode& node) {
    for (const XmlNode& child : ChildrenOf(node)) {
      if (NodeNameIs(child, L"WJMO")) NodeText(child, mark);
      if (NodeNameIs(child, L"QUALITY")) NodeText(child, quality);
    }
  }

  std::wstring mark;
  std::wstring quality;
};

struct CopyrightEntry {
  explicit CopyrightEntry(const XmlNode& node) {
    for (const XmlNode& child : ChildrenOf(node)) {
      if (NodeNameIs(child, L"RINGSTYLE")) NodeText(child, texts[0]);
      if (NodeNameIs(child, L"STYLESIZE")) NodeText(child, texts[1]);
      if (NodeNameIs(child, L"FONT")) NodeText(child, texts[2]);
      if (NodeNameIs(child, L"NUMROWS")) NodeText(child, texts[3]);
      if (NodeNameIs(child, L"FINGERSIZE")) NodeText(child, rule);
      if (NodeNameIs(child, L"FONTSIZE")) NodeDouble(child, fontSize);
    }
  }

  std::array<std::wstring, 4> texts;  // ring style, its size, font, number of rows
  std::wstring rule;
  double fontSize = 0;
};

}  // namespace

CHTrademarkXMLReader::CHTrademarkXMLReader(wchar_t* mark, wchar_t* quality, const wchar_t* path,
                                           FILE* log) {
  m_bValid = ParseFile(mark, quality, path, log);
}
CHTrademarkXMLReader::CHTrademarkXMLReader(const CHTrademarkXMLReader&) = default;
CHTrademarkXMLReader& CHTrademarkXMLReader::operator=(const CHTrademarkXMLReader&) = default;
CHTrademarkXMLReader::~CHTrademarkXMLReader() = default;

bool CHTrademarkXMLReader::ParseFile(wchar_t* mark, wchar_t* quality, const wchar_t* path,
                                     FILE* /*log*/) {
  const XmlNode root = LoadChart(path);
  if (!root || !NodeNameIs(root, L"TRADEMARKCHART")) return false;
  for (const XmlNode& node : Entries(root, L"FILES", L"FILE")) {
    const TrademarkEntry entry(node);
    if (entry.mark != TextOf(mark) || entry.quality.find(TextOf(quality)) == std::wstring::npos)
      continue;
    std::wstring name;
    AttributeString(node, L"name", name);
    std::array<wchar_t, FileSize> file{};
    if (!BoundedCopy(file, name, L"name", path)) return false;
    std::ranges::copy(file, m_TrademarkFile);
    return true;
  }
  return false;
}

bool CHTrademarkXMLReader::GetTrademarkFile(wchar_t* target) {
  if (!m_bValid || target == nullptr) return false;
  // As much as there is: a caller's target may be shorter than the longest answer.
  const std::wstring_view file = m_TrademarkFile;
  *std::ranges::copy(file, target).out = L'\0';
  return true;
}

CHSymbolChartXMLReader::CHSymbolChartXMLReader(wchar_t* size, const wchar_t* path, FILE* log) {
  m_bValid = ParseFile(size, path, log);
}
CHSymbolChartXMLReader::CHSymbolChartXMLReader(const CHSymbolChartXMLReader&) = default;
CHSymbolChartXMLReader& CHSymbolChartXMLReader::operator=(const CHSymbolChartXMLReader&) = default;
CHSymbolChartXMLReader::~CHSymbolChartXMLReader() = default;

bool CHSymbolChartXMLReader::ParseFile(wchar_t* size, const wchar_t* path, FILE* /*log*/) {
  const XmlNode root = LoadChart(path);
  if (!root || !NodeNameIs(root, L"SYMBOLTABLE")) return false;
  for (const XmlNode& node : Entries(root, L"RINGS", L"RING")) {
    if (!HasAttribute(node, L"size", TextOf(size))) continue;
    for (const XmlNode& child : ChildrenOf(node)) {
      if (NodeNameIs(child, L"HEIGHT")) NodeDouble(child, m_Height);
      if (NodeNameIs(child, L"TRADEMARK")) NodeDouble(child, m_Trademark);
      if (NodeNameIs(child, L"SIGHEIGHT")) NodeDouble(child, m_SigHeight);
    }
    return true;
  }
  return false;
}

CHFontXMLReader::CHFontXMLReader(wchar_t* font, const wchar_t* path, FILE* log) {
  m_bValid = ParseFile(font, path, log);
}
CHFontXMLReader::CHFontXMLReader(const CHFontXMLReader&) = default;
CHFontXMLReader& CHFontXMLReader::operator=(const CHFontXMLReader&) = default;
CHFontXMLReader::~CHFontXMLReader() = default;

bool CHFontXMLReader::ParseFile(wchar_t* font, const wchar_t* path, FILE* /*log*/) {
  const XmlNode root = LoadChart(path);
  if (font == nullptr || !root || !NodeNameIs(root, L"FONTTABLE")) return false;
  for (const XmlNode& node : ChildrenOf(root)) {
    if (!HasAttribute(node, L"node", font)) continue;
    std::wstring name;
    std::array<wchar_t, FontSize> fitting{};
    for (const XmlNode& child : ChildrenNamed(node, L"FONT_NAME"))
      if (NodeText(child, name) && !BoundedCopy(fitting, name, L"FONT_NAME", path)) return false;
    // No more than the last name: the caller's buffer must hold that.
    if (!name.empty()) *std::ranges::copy(name, font).out = L'\0';
    return true;
  }
  return false;
}

CHCopyrightEngravingXMLReader::CHCopyrightEngravingXMLReader(wchar_t* ringStyle, wchar_t* styleSize,
                                                             wchar_t* font, wchar_t* numRows,
                                                             wchar_t* fingerSize,
                                                             const wchar_t* path, FILE* log) {
  m_bValid = ParseFile(ringStyle, styleSize, font, numRows, fingerSize, path, log);
}
CHCopyrightEngravingXMLReader::CHCopyrightEngravingXMLReader(const CHCopyrightEngravingXMLReader&) =
    default;
CHCopyrightEngravingXMLReader& CHCopyrightEngravingXMLReader::operator=(
    const CHCopyrightEngravingXMLReader&) = default;
CHCopyrightEngravingXMLReader::~CHCopyrightEngravingXMLReader() = default;

bool CHCopyrightEngravingXMLReader::ParseFile(wchar_t* ringStyle, wchar_t* styleSize, wchar_t* font,
                                              wchar_t* numRows, wchar_t* fingerSize,
                                              const wchar_t* path, FILE* /*log*/) {
  const XmlNode root = LoadChart(path);
  if (!root || !NodeNameIs(root, L"COPYRIGHTENGRAVING")) return false;
  const std::array texts{TextOf(ringStyle), TextOf(styleSize), TextOf(font), TextOf(numRows)};
  const std::wstring size(TextOf(fingerSize));
  for (const XmlNode& node : Entries(root, L"ENTRIES", L"ENTRY")) {
    const CopyrightEntry entry(node);
    if (!std::ranges::equal(entry.texts, texts) ||
        !rastrel::readers::SatisfiesFingerSizeRule(size, entry.rule))
      continue;
    m_FontSize = entry.fontSize;
    return true;
  }
  return false;
}

CHCapRulesXMLReader::CHCapRulesXMLReader(std::vector<std::wstring>& words, const wchar_t* path,
                                         FILE* log) {
  m_bValid = ParseFile(words, path, log);
}
CHCapRulesXMLReader::CHCapRulesXMLReader(const CHCapRulesXMLReader&) = default;
CHCapRulesXMLReader& CHCapRulesXMLReader::operator=(const CHCapRulesXMLReader&) = default;
CHCapRulesXMLReader::~CHCapRulesXMLReader() = default;

bool CHCapRulesXMLReader::ParseFile(std::vector<std::wstring>& words, const wchar_t* path,
                                    FILE* /*log*/) {
  const XmlNode root = LoadChart(path);
  if (!root) return false;
  // A host hands over the charts that it has, and one of another kind has no rules for it.
  if (!NodeNameIs(root, L"CAPSET")) return true;
  const std::vector<XmlNode> entries = Entries(root, L"SPECIAL", L"CASE");
  for (const XmlNode& node : entries) NodeText(node, words.emplace_back());
  return !entries.empty();
}
