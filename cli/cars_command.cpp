#include "cli/cars_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/standard_streams.h"
#include "cli/xml_input.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

using Json = nlohmann::ordered_json;

/// The pieces that a line of the tree begins with.
struct Branches {
  const char* child;
  const char* lastChild;
  const char* goesOn;
  const char* ended;
};
constexpr Branches BoxDrawing{"├── ", "└── ", "│   ", "    "};
constexpr Branches Ascii{"|-- ", "`-- ", "|   ", "    "};

std::string NodeText(const CFolderInfo& node) {
  std::string text = OneLineText(node.m_Name);
  if (node.m_Folder != 0) return text + "/";
  if (*node.m_Extension != L'\0') text += " [" + OneLineText(node.m_Extension) + "]";
  if (*node.m_Url != L'\0') text += " " + OneLineText(node.m_Url);
  return text;
}

void AppendChildren(const CFolderInfo& folder, const std::string& indent, const Branches& branches,
                    std::string& text) {
  for (const auto& child : folder.m_Children) {
    const bool last = child == folder.m_Children.back();
    text += indent + (last ? branches.lastChild : branches.child) + NodeText(*child) + "\n";
    AppendChildren(*child, indent + (last ? branches.ended : branches.goesOn), branches, text);
  }
}

Json NodeObject(const CFolderInfo& node) {
  const bool isFolder = node.m_Folder != 0;
  Json object = {{"kind", isFolder ? "folder" : "file"}, {"name", os::Utf8FromWide(node.m_Name)}};
  if (!isFolder) {
    object["url"] = os::Utf8FromWide(node.m_Url);
    object["extension"] = os::Utf8FromWide(node.m_Extension);
    return object;
  }
  object["children"] = Json::array();
  for (const auto& child : node.m_Children) object["children"].push_back(NodeObject(*child));
  return object;
}

std::string FolderObject(const CFolderInfo& folder) {
  Json object = {{"event", "folder"}};
  object.update(NodeObject(folder));
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

bool TextIsUtf8() {
  std::string locale;
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    locale = os::EnvironmentValue(name);
    if (!locale.empty()) break;
  }
  std::erase(locale, '-');
  std::ranges::transform(locale, locale.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
  });
  return locale.find(".utf8") != locale.npos;
}

std::string FolderTree(const CFolderInfo& folder, bool boxDrawing) {
  std::string text = NodeText(folder) + "\n";
  AppendChildren(folder, "", boxDrawing ? BoxDrawing : Ascii, text);
  return text;
}

ExitStatus CarsCommand(const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  CXMLCarDataCut cars(ReaderPath(invocation.operand).c_str());
  const CFolderInfo* folder = cars.GetFirstFolder();
  if (folder == nullptr) {
    ThrowIfRefused({invocation.operand, L"LIBRARY", true});
    if (!json) WriteOut("no folders\n");
  }
  const bool boxDrawing = TextIsUtf8();
  for (; folder != nullptr; folder = cars.GetNextFolder())
    WriteOut(json ? FolderObject(*folder) : FolderTree(*folder, boxDrawing));
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
