#include <algorithm>
#include <string>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {
namespace {

// A text so that it reads back unchanged. Tabs and line feeds would be lost in attributes only, a
// carriage return everywhere.
void AppendEscaped(std::string& target, std::string_view text, bool attribute) {
  for (const char byte : text) {
    switch (byte) {
      case '&': target += "&amp;"; break;
      case '<': target += "&lt;"; break;
      case '>': target += "&gt;"; break;
      case '\r': target += "&#13;"; break;
      case '"': target += attribute ? "&quot;" : "\""; break;
      case '\t': target += attribute ? "&#9;" : "\t"; break;
      case '\n': target += attribute ? "&#10;" : "\n"; break;
      default: target += byte;
    }
  }
}

void AppendAttribute(std::string& target, const XmlTreeAttribute& attribute) {
  target += ' ';
  target += attribute.name->bytes;
  target += "=\"";
  AppendEscaped(target, attribute.Value(), true);
  target += '"';
}

// Declarations that the element has from its parents, inner ones ahead of the outer ones that they
// hide.
std::vector<XmlTreeAttribute> Inherited(const XmlTreeNode& element) {
  std::vector<XmlTreeAttribute> found;
  const auto add = [&](const XmlTreeNode& node, bool own) {
    for (const XmlTreeAttribute& attribute : node.Attributes()) {
      const bool known =
          std::any_of(found.begin(), found.end(),
                      [&](const XmlTreeAttribute& other) { return other.name == attribute.name; });
      if (attribute.declaresNamespace && !known) found.push_back(attribute);
    }
    return own ? found.size() : 0;
  };
  const std::size_t own = add(element, true);
  for (const XmlTreeNode* node = element.parent; node != nullptr; node = node->parent)
    add(*node, false);
  found.erase(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(own));
  return found;
}

void AppendNode(std::string& target, const XmlTreeNode& node, bool outermost);

void AppendElement(std::string& target, const XmlTreeNode& element, bool outermost) {
  target += '<';
  target += element.name->bytes;
  if (outermost)
    for (const XmlTreeAttribute& attribute : Inherited(element)) AppendAttribute(target, attribute);
  for (const XmlTreeAttribute& attribute : element.Attributes()) AppendAttribute(target, attribute);
  if (element.child == nullptr) {
    target += "/>";
    return;
  }
  target += '>';
  for (const XmlTreeNode* child = element.child; child != nullptr; child = child->next)
    AppendNode(target, *child, false);
  target += "</";
  target += element.name->bytes;
  target += '>';
}

void AppendNode(std::string& target, const XmlTreeNode& node, bool outermost) {
  const std::string_view content = node.kind == XmlKind::Element ? "" : node.Content();
  switch (node.kind) {
    case XmlKind::Element: return AppendElement(target, node, outermost);
    case XmlKind::Text: return AppendEscaped(target, content, false);
    case XmlKind::Cdata: target.append("<![CDATA[").append(content).append("]]>"); break;
    case XmlKind::Comment: target.append("<!--").append(content).append("-->"); break;
    case XmlKind::Instruction:
      target.append("<?").append(node.name->bytes);
      if (!content.empty()) target.append(" ").append(content);
      target.append("?>");
      break;
  }
}

}  // namespace
}  // namespace rastrel::xml

bool SaveNodeXml(const XmlNode& node, std::wstring_view path) {
  auto file = rastrel::os::CreateForWriting(path);
  if (!file) return false;
  std::string text;
  if (node) rastrel::xml::AppendNode(text, *node.Tree(), true);
  return static_cast<bool>(rastrel::os::WriteAll(file->Get(), text));
}
