#include "rastrel/xml/layer.h"

#include <algorithm>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/tree.h"
#include "rastrel/xml/walk.h"

namespace os = rastrel::os;
namespace xml = rastrel::xml;

namespace {

// Most nodes hold short values of ASCII.
void AssignWide(std::wstring& target, std::string_view bytes) {
  constexpr std::size_t shortLength = 64;
  const bool plain = bytes.size() <= shortLength &&
                     std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte >= 0; });
  if (plain) {
    target.assign(bytes.begin(), bytes.end());
  } else {
    target.clear();
    os::AppendWideFromUtf8(target, bytes);
  }
}

bool Take(std::string_view bytes, std::wstring& target) {
  if (!bytes.empty()) AssignWide(target, bytes);
  return !bytes.empty();
}

bool Take(std::string_view bytes, double& target) {
  if (!bytes.empty()) target = os::DoubleFromText(bytes);
  return !bytes.empty();
}

bool Take(std::string_view bytes, std::int32_t& target) {
  if (!bytes.empty()) target = os::Int32FromText(bytes);
  return !bytes.empty();
}

template <typename Value>
bool TakeText(const XmlNode& node, Value& value) {
  std::string scratch;
  return Take(xml::TextBytes(node, scratch), value);
}

template <typename Visit>
void ForEachChild(const XmlNode& node, const Visit& visit) {
  for (XmlNode child = xml::FirstChild(node); child; child = xml::NextSibling(child)) visit(child);
}

}  // namespace

std::vector<XmlNode> NodeChildren(const XmlNode& node, int& count) {
  std::vector<XmlNode> children;
  ForEachChild(node, [&](const XmlNode& child) { children.push_back(child); });
  count = static_cast<int>(children.size());
  return children;
}

std::vector<XmlNode> ChildrenNamed(const XmlNode& node, std::wstring_view name) {
  std::vector<XmlNode> children;
  ForEachChild(node, [&](const XmlNode& child) {
    if (xml::IsNamed(child, name)) children.push_back(child);
  });
  return children;
}

XmlNode FirstChildNamed(const XmlNode& node, std::wstring_view name) {
  XmlNode child = xml::FirstChild(node);
  while (child && !xml::IsNamed(child, name)) child = xml::NextSibling(child);
  return child;
}

bool NodeNameIs(const XmlNode& node, std::wstring_view name) { return xml::IsNamed(node, name); }

int NodeLine(const XmlNode& node) {
  return xml::IsElement(node) ? static_cast<int>(node.Tree()->line) : 0;
}

bool NodeBaseName(const XmlNode& node, std::wstring& name) {
  name = xml::BaseName(node);
  return !name.empty();
}

bool NodeText(const XmlNode& node, std::wstring& text) { return TakeText(node, text); }
bool NodeDouble(const XmlNode& node, double& value) { return TakeText(node, value); }
bool NodeInt(const XmlNode& node, std::int32_t& value) { return TakeText(node, value); }

bool NodeFloat(const XmlNode& node, float& value) {
  double wide = 0.0;
  if (!TakeText(node, wide)) return false;
  value = static_cast<float>(wide);
  return true;
}

bool AttributeString(const XmlNode& node, std::wstring_view name, std::wstring& value) {
  return Take(xml::AttributeBytes(node, name), value);
}
bool AttributeDouble(const XmlNode& node, std::wstring_view name, double& value) {
  return Take(xml::AttributeBytes(node, name), value);
}
bool AttributeInt(const XmlNode& node, std::wstring_view name, std::int32_t& value) {
  return Take(xml::AttributeBytes(node, name), value);
}

std::vector<std::pair<std::wstring, std::wstring>> AttributeList(const XmlNode& node) {
  std::vector<std::pair<std::wstring, std::wstring>> list;
  if (!xml::IsElement(node)) return list;
  for (const xml::XmlTreeAttribute& attribute : node.Tree()->Attributes())
    if (attribute.length > 0)
      list.emplace_back(attribute.name->local, os::WideFromUtf8(attribute.Value()));
  return list;
}
