#include "rastrel/readers/car_data.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "rastrel/imports/bounded_copy.h"
#include "rastrel/imports/file_extension.h"
#include "rastrel/readers/record_budget.h"
#include "rastrel/xml/layer.h"

namespace {

/// Reads one file. The operations are false if a value does not fit its field, or if there are more
/// nodes than there is room for.
class Parser {
 public:
  explicit Parser(std::wstring_view path) : m_Path(path), m_Budget(path) {}

  bool ParseFolder(const XmlNode& element, CFolderInfo& folder) {
    folder.m_Folder = 1;
    return m_Budget.Take(sizeof(CFolderInfo)) && Copy(element, L"name", folder.m_Name) &&
           ParseForFoldersNodes(element, folder) && ParseForFileNodes(element, folder);
  }

 private:
  // Two passes over the same children: hosts show the folders above the files.
  bool ParseForFoldersNodes(const XmlNode& element, CFolderInfo& folder) {
    return std::ranges::all_of(ChildrenNamed(element, L"FOLDERS"), [&](const XmlNode& child) {
      return ParseFolder(child, Append(folder));
    });
  }

  bool ParseForFileNodes(const XmlNode& element, CFolderInfo& folder) {
    return std::ranges::all_of(ChildrenNamed(element, L"FILE"), [&](const XmlNode& child) {
      CFolderInfo& file = Append(folder);
      return m_Budget.Take(sizeof(CFolderInfo)) && Copy(child, L"name", file.m_Name) &&
             Copy(child, L"url", file.m_Url) && Copy(child, L"extension", file.m_Extension);
    });
  }

  static CFolderInfo& Append(CFolderInfo& folder) {
    return *folder.m_Children.emplace_back(std::make_unique<CFolderInfo>());
  }

  bool Copy(const XmlNode& element, std::wstring_view attribute,
            wchar_t (&field)[CarDataTextSize]) {
    return !AttributeString(element, attribute, m_Value) ||
           rastrel::imports::BoundedCopy(field, m_Value, attribute, m_Path);
  }

  std::wstring_view m_Path;
  rastrel::readers::RecordBudget m_Budget;
  std::wstring m_Value;
};

}  // namespace

CFolderInfo::CFolderInfo() = default;

CFolderInfo::~CFolderInfo() { ClearSubFolders(); }

void CFolderInfo::ClearSubFolders() {
  // One level at a time: a tree's depth must not become the stack's.
  std::vector<std::unique_ptr<CFolderInfo>> nodes = std::exchange(m_Children, {});
  while (!nodes.empty()) {
    std::vector<std::unique_ptr<CFolderInfo>> below;
    for (const auto& node : nodes) std::ranges::move(node->m_Children, std::back_inserter(below));
    for (const auto& node : nodes) node->m_Children.clear();
    nodes = std::move(below);
  }
}

CXMLCarDataCut::CXMLCarDataCut(const wchar_t* path) { m_bValid = ParseFile(path); }

CXMLCarDataCut::CXMLCarDataCut(const CXMLCarDataCut&) = default;
CXMLCarDataCut& CXMLCarDataCut::operator=(const CXMLCarDataCut&) = default;

CXMLCarDataCut::~CXMLCarDataCut() { ClearFolders(); }

bool CXMLCarDataCut::ParseFile(const wchar_t* path) {
  using rastrel::imports::ExtensionTrim;
  if (!rastrel::imports::IsFileOfType(path, {L"xml"}, ExtensionTrim::Whitespace)) return false;
  const XmlNode root = LoadXmlFile(path);
  if (!root || !NodeNameIs(root, L"LIBRARY")) return false;
  Parser parser(path);
  std::vector<std::shared_ptr<CFolderInfo>> folders;
  for (const XmlNode& element : ChildrenNamed(root, L"FOLDER"))
    if (!parser.ParseFolder(element, *folders.emplace_back(std::make_shared<CFolderInfo>())))
      return false;
  std::ranges::move(folders, std::back_inserter(m_Folders));
  return true;
}

CFolderInfo* CXMLCarDataCut::GetFirstFolder() {
  m_Cursor = 0;
  return m_Folders.empty() ? nullptr : m_Folders.front().get();
}

CFolderInfo* CXMLCarDataCut::GetNextFolder() {
  if (m_Cursor < m_Folders.size() && ++m_Cursor < m_Folders.size())
    return m_Folders[m_Cursor].get();
  m_Cursor = AtEnd;
  return nullptr;
}

void CXMLCarDataCut::ClearFolders() {
  m_Folders.clear();
  m_Cursor = AtEnd;
}
