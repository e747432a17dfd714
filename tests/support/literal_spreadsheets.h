#pragma once

#include <cstdint>
#include <cwchar>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/xml/layer.h"

/// The imports of spreadsheets as their rules are written down: whole documents as trees, wide text
/// that grows and is trimmed, one step after the other. The shipped ones, which read streams, are
/// compared with them.
namespace rastrel::test {

inline void ReplaceInText(std::wstring& text, std::wstring_view what, std::wstring_view by) {
  for (std::size_t at = text.find(what); at != std::wstring::npos; at = text.find(what, at)) {
    text.replace(at, what.size(), by);
    at += by.size();
  }
}

inline void ReplaceEntitiesInText(std::wstring& text) {
  ReplaceInText(text, L"&quot;", L"\"");
  ReplaceInText(text, L"&amp;", L"&");
  ReplaceInText(text, L"&lt;", L"<");
  ReplaceInText(text, L"&gt;", L">");
  ReplaceInText(text, L"&apos;", L"'");
}

inline void TrimTextRight(std::wstring& text, std::wstring_view set) {
  text.erase(text.find_last_not_of(set) + 1);
}

inline void TrimTextBothSides(std::wstring& text) {
  constexpr std::wstring_view white = L" \t\n\v\f\r";
  TrimTextRight(text, white);
  text.erase(0, std::min(text.find_first_not_of(white), text.size()));
}

/// The bytes of a text file of mode "wt,ccs=UTF-8".
inline std::string TextFileBytes(const std::wstring& text) {
  std::string bytes = "\xEF\xBB\xBF";
  for (const char byte : os::Utf8FromWide(text)) {
    if (byte == '\n') bytes += '\r';
    bytes += byte;
  }
  return bytes;
}

inline std::vector<XmlNode> ChildrenOf(const XmlNode& node) {
  int count = 0;
  return NodeChildren(node, count);
}

/// Excel. The text goes to m_Written in place of a file.
class LiteralExcelImport {
 public:
  explicit LiteralExcelImport(std::wstring folder) : m_Folder(std::move(folder)) {}

  bool ParseXmlFiles(const std::vector<tagEXCEL_XML_FILE*>& files) {
    bool result = false;
    for (const tagEXCEL_XML_FILE* file : files) {
      if (!os::Exists(file->path)) return false;
      if (file->type == 1) result = Load(file->path, L"workbook", L"sheets", L"sheet", m_Workbook);
      if (file->type == 2)
        result = Load(file->path, L"Relationships", L"Relationship", L"", m_Relationships);
      if (file->type == 3) result = LoadSharedStrings(file->path);
      if (!result) return false;
    }
    return ProcessExcelSheets() && SaveDataToFile();
  }

  std::string m_Written = "(none)";

 private:
  struct Element {
    std::wstring name;
    std::vector<std::pair<std::wstring, std::wstring>> attributes;
    [[nodiscard]] std::wstring Value(std::wstring_view wanted) const {
      std::wstring found;
      for (const auto& [attribute, value] : attributes)
        if (attribute == wanted) found = value;
      return found;
    }
  };

  static bool Load(const std::wstring& path, std::wstring_view rootName,
                   std::wstring_view parentName, std::wstring_view childName,
                   std::vector<Element>& elements) {
    const XmlNode root = LoadXmlFile(path);
    if (!root || !NodeNameIs(root, rootName)) return false;
    for (const XmlNode& parent : ChildrenNamed(root, parentName)) {
      if (childName.empty()) elements.push_back({std::wstring(parentName), AttributeList(parent)});
      if (childName.empty()) continue;
      for (const XmlNode& child : ChildrenNamed(parent, childName))
        elements.push_back({std::wstring(childName), AttributeList(child)});
    }
    return true;
  }

  bool LoadSharedStrings(const std::wstring& path) {
    const XmlNode root = LoadXmlFile(path);
    if (!root || !NodeNameIs(root, L"sst")) return true;
    int index = 0;
    for (const XmlNode& si : ChildrenNamed(root, L"si"))
      for (const XmlNode& t : ChildrenNamed(si, L"t")) {
        std::wstring text;
        if (NodeText(t, text)) m_SharedStrings[index++] = text;
      }
    return true;
  }

  bool ProcessExcelSheets() {
    bool succeeded = false;
    for (const Element& sheet : m_Workbook) {
      std::wstring target;
      for (const Element& relationship : m_Relationships)
        if (relationship.Value(L"Id") == sheet.Value(L"id")) {
          target = relationship.Value(L"Target");
          break;
        }
      const std::wstring path = m_Folder + L"\\xl\\" + target;
      if (os::Exists(path) && ParseSheetXmlFile(path))
        succeeded = true;
      else if (!succeeded)
        return false;
    }
    return true;
  }

  bool ParseSheetXmlFile(const std::wstring& path) {
    const XmlNode root = LoadXmlFile(path);
    if (!root) return false;
    const XmlNode worksheet =
        NodeNameIs(root, L"worksheet") ? root : FirstChildNamed(root, L"worksheet");
    const XmlNode data = FirstChildNamed(worksheet, L"sheetData");
    if (!data) return false;
    for (const XmlNode& row : ChildrenNamed(data, L"row")) {
      ParseRowNode(row);
      TrimTextRight(m_Text, L" ,.");
      m_Text += L'\n';
    }
    TrimTextRight(m_Text, L"\n");
    return true;
  }

  void ParseRowNode(const XmlNode& row) {
    constexpr std::wstring_view alphabet = L"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::size_t counter = 0;
    const std::vector<XmlNode> children = ChildrenOf(row);
    for (std::size_t place = 0; place < children.size(); ++place) {
      if (!NodeNameIs(children[place], L"c")) continue;
      std::wstring reference;
      AttributeString(children[place], L"r", reference);
      while (place + counter < alphabet.size() &&
             reference.find(alphabet[place + counter]) == std::wstring::npos) {
        m_Text += L'\t';
        ++counter;
      }
      std::wstring value = ValueOf(children[place]);
      ReplaceEntitiesInText(value);
      ReplaceInText(value, L"\n", L"\x08");
      m_Text += value + L'\t';
    }
  }

  std::wstring ValueOf(const XmlNode& cell) {
    std::wstring type;
    AttributeString(cell, L"t", type);
    std::wstring text;
    if (!NodeText(FirstChildNamed(cell, L"v"), text)) return {};
    if (type == L"s") {
      const auto found = m_SharedStrings.find(os::Int32FromText(text));
      return found == m_SharedStrings.end() ? std::wstring() : found->second;
    }
    wchar_t printed[400] = {};
    if (text.find(L'.') == std::wstring::npos)
      std::swprintf(printed, 400, L"%lld", static_cast<long long>(os::Int64FromText(text)));
    else
      std::swprintf(printed, 400, L"%f", os::DoubleFromText(text));
    return printed;
  }

  bool SaveDataToFile() {
    if (m_Folder.empty()) return false;
    TrimTextBothSides(m_Text);
    if (m_Text.empty()) return false;
    m_Written = TextFileBytes(m_Text);
    return true;
  }

  std::wstring m_Folder;
  std::wstring m_Text;
  std::map<std::int32_t, std::wstring> m_SharedStrings;
  std::vector<Element> m_Workbook;
  std::vector<Element> m_Relationships;
};

/// OpenOffice. The text goes to m_Written in place of a file.
class LiteralOpenOfficeImport {
 public:
  using Row = std::vector<std::wstring>;
  using Table = std::vector<Row>;

  explicit LiteralOpenOfficeImport(const std::wstring& path) { m_ParseResult = ParseFile(path); }

  int ImportXMLFile() {
    if (!m_ParseResult) return 0;
    std::wstring text;
    for (const Table& table : m_Tables)
      for (const Row& row : table) {
        for (const std::wstring& cell : row) text += cell + L'\t';
        TrimTextRight(text, L" .");
        text += L'\n';
      }
    TrimTextRight(text, L"\n");
    return SaveDataToFile(text);
  }

  std::vector<Table> m_Tables;
  std::string m_Written = "(none)";

 private:
  bool ParseFile(const std::wstring& path) {
    std::wstring extension = os::SplitPath(path).extension;
    if (extension != L".xml") return false;
    const XmlNode root = LoadXmlFile(path);
    if (!root || !NodeNameIs(root, L"document-content")) return false;
    const XmlNode body = FirstChildNamed(root, L"body");
    for (const XmlNode& spreadsheet : ChildrenNamed(body, L"spreadsheet"))
      for (const XmlNode& table : ChildrenNamed(spreadsheet, L"table"))
        m_Tables.push_back(ReadTable(table));
    return !m_Tables.empty();
  }

  static Table ReadTable(const XmlNode& node) {
    Table table;
    for (const XmlNode& row : ChildrenNamed(node, L"table-row")) {
      table.emplace_back();
      for (const XmlNode& cell : ChildrenNamed(row, L"table-cell")) {
        std::int32_t repeat = 1;
        AttributeInt(cell, L"table:number-columns-repeated", repeat);
        for (std::int32_t count = 0; count < repeat; ++count)
          table.back().push_back(ReadCell(cell));
      }
    }
    return table;
  }

  static std::wstring ReadCell(const XmlNode& cell) {
    std::wstring text;
    for (const XmlNode& p : ChildrenNamed(cell, L"p")) NodeText(p, text);
    return text;
  }

  int SaveDataToFile(std::wstring text) {
    TrimTextBothSides(text);
    if (text.empty()) return 0;
    ReplaceEntitiesInText(text);
    m_Written = TextFileBytes(text);
    return 1;
  }

  bool m_ParseResult = false;
};

}  // namespace rastrel::test
