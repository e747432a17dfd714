#include "spreadsheet/part_name.h"

#include <algorithm>
#include <vector>

#include "rastrel/platform/os/hex.h"

namespace rastrel::spreadsheet {
namespace {

constexpr std::size_t MaximumName = 1024;  // bytes
constexpr std::size_t MaximumElement = 255;

bool IsControl(char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7F; }

std::vector<std::string_view> ElementsOf(std::string_view name) {
  std::vector<std::string_view> elements;
  for (;;) {
    const std::size_t slash = name.find('/');
    elements.push_back(name.substr(0, slash));
    if (slash == name.npos) return elements;
    name.remove_prefix(slash + 1);
  }
}

std::string Unescaped(std::string_view target) {
  std::string text;
  for (std::size_t at = 0; at < target.size(); ++at) {
    const auto byte = target[at] == '%' && at + 2 < target.size()
                          ? os::ByteFromHex(target[at + 1], target[at + 2])
                          : std::nullopt;
    text += byte ? static_cast<char>(*byte) : target[at];
    if (byte) at += 2;
  }
  return text;
}

}  // namespace

std::string WhyBadName(std::string_view name) {
  if (name.empty()) return "its name is empty";
  if (name.size() > MaximumName)
    return "its name has more than " + std::to_string(MaximumName) + " bytes";
  if (std::ranges::any_of(name, IsControl)) return "its name has a control character";
  if (name.find('\\') != name.npos) return "its name has a backslash";
  if (name.front() == '/') return "its name is an absolute path";
  if (name.size() > 1 && name[1] == ':') return "its name begins with a drive";
  if (name.back() == '/') name.remove_suffix(1);
  for (const std::string_view element : ElementsOf(name)) {
    if (element == "..") return "its name leads out of the package";
    if (element.empty() || element == ".") return "its name has an empty element";
    if (element.size() > MaximumElement)
      return "its name has an element of more than " + std::to_string(MaximumElement) + " bytes";
  }
  return {};
}

std::string ResolveTarget(std::string_view part, std::string_view target) {
  std::string text = Unescaped(target);
  std::vector<std::string> elements;
  if (!text.starts_with('/')) {
    for (const std::string_view element : ElementsOf(part)) elements.emplace_back(element);
    elements.pop_back();
  }
  for (const std::string_view element : ElementsOf(text)) {
    if (element.empty() || element == ".") continue;
    if (element != "..") {
      elements.emplace_back(element);
      continue;
    }
    if (elements.empty()) return {};
    elements.pop_back();
  }
  std::string name;
  for (const std::string& element : elements) name += (name.empty() ? "" : "/") + element;
  return WhyBadName(name).empty() ? name : std::string();
}

std::string RelationshipsOf(std::string_view part) {
  const std::size_t slash = part.rfind('/');
  const std::size_t begin = slash == part.npos ? 0 : slash + 1;
  return std::string(part.substr(0, begin)) + "_rels/" + std::string(part.substr(begin)) + ".rels";
}

std::string PrintableName(std::string_view name) {
  constexpr std::size_t maximum = 200;
  std::string text;
  for (const char letter : name.substr(0, maximum)) {
    const auto byte = static_cast<unsigned char>(letter);
    if (byte >= 0x20 && byte < 0x7F && letter != '\'') {
      text += letter;
    } else {
      text += "\\x";
      os::AppendHex(text, byte);
    }
  }
  return text + (name.size() > maximum ? "..." : "");
}

bool SameName(std::string_view one, std::string_view other) {
  const auto lower = [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
  };
  return std::ranges::equal(one, other, {}, lower, lower);
}

}  // namespace rastrel::spreadsheet
