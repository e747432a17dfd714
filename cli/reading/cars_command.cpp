#include "cli/reading/cars_command.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/console/json_text.h"
#include "cli/console/long_output.h"
#include "cli/console/standard_streams.h"
#include "cli/input/xml_input.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/readers/car_data.h"

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

void WriteChildren(const CFolderInfo& folder, const std::string& indent, const Branches& branches,
                   LongOutput& output) {
  for (const auto& child : folder.m_Children) {
    const bool last = child == folder.m_Children.back();
    output.Append(indent + (last ? branches.lastChild : branches.child) + NodeText(*child) + "\n");
    WriteChildren(*child, indent + (last ? branches.ended : branches.goesOn), branches, output);
  }
}

void WriteTree(const CFolderInfo& folder, const Branches& branches, LongOutput& output) {
  output.Append(NodeText(folder) + "\n");
  WriteChildren(folder, "", branches, output);
}

// An object of the node alone. Folders get their children after that.
std::string MembersOf(const CFolderInfo& node, const char* event) {
  const bool isFolder = node.m_Folder != 0;
  Json object = Json::object();
  if (*event != '\0') object["event"] = event;
  object["kind"] = isFolder ? "folder" : "file";
  object["name"] = os::Utf8FromWide(node.m_Name);
  if (!isFolder) {
    object["url"] = os::Utf8FromWide(node.m_Url);
    object["extension"] = os::Utf8FromWide(node.m_Extension);
  }
  return JsonText(object);
}

void WriteObject(const CFolderInfo& node, const char* event, LongOutput& output) {
  std::string members = MembersOf(node, event);
  if (node.m_Folder == 0) return output.Append(members);
  members.pop_back();
  output.Append(members + ",\"children\":[");
  for (const auto& child : node.m_Children) {
    if (child != node.m_Children.front()) output.Append(",");
    WriteObject(*child, "", output);
  }
  output.Append("]}");
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

ExitStatus CarsCommand(const Invocation& invocation) {
  const bool json = invocation.Has(OptionId::Json);
  CXMLCarDataCut cars(ReaderPath(invocation.operand).c_str());
  const CFolderInfo* folder = cars.GetFirstFolder();
  if (folder == nullptr) {
    OrEnd(ExitStatus::NotInstalled, CheckXmlParser());
    OrEnd(ExitStatus::BadInput, CheckXmlInput({invocation.operand, L"LIBRARY", true}));
    if (!json) WriteOutLine("no folders");
  }
  const Branches& branches = TextIsUtf8() ? BoxDrawing : Ascii;
  LongOutput output;
  for (; folder != nullptr; folder = cars.GetNextFolder()) {
    if (!json) {
      WriteTree(*folder, branches, output);
      continue;
    }
    WriteObject(*folder, "folder", output);
    output.Append("\n");
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
