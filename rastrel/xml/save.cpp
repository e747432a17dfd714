#include "rastrel/xml/save.h"

#include <algorithm>
#include <string>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {
namespace {

void WriteAttribute(const XmlTreeAttribute& attribute, XmlPieces& pieces) {
  pieces.Markup(" ");
  pieces.Markup(attribute.name->bytes);
  pieces.Markup("=\"");
  pieces.Text(attribute.Value(),
              attribute.declaresNamespace ? XmlTextPlace::Namespace : XmlTextPlace::Attribute);
  pieces.Markup("\"");
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

void Write(const XmlNode& node, bool outermost, XmlPieces& pieces);

void WriteElement(const XmlNode& node, bool outermost, XmlPieces& pieces) {
  const XmlTreeNode& element = *node.Tree();
  if (!pieces.Begin(node)) return;
  pieces.Markup("<");
  pieces.Markup(element.name->bytes);
  if (outermost)
    for (const XmlTreeAttribute& attribute : Inherited(element)) WriteAttribute(attribute, pieces);
  for (const XmlTreeAttribute& attribute : element.Attributes()) WriteAttribute(attribute, pieces);
  if (element.child == nullptr) {
    pieces.Markup("/>");
  } else {
    pieces.Markup(">");
    for (const XmlTreeNode* child = element.child; child != nullptr; child = child->next)
      Write(XmlNode(child, node.Document()), false, pieces);
    pieces.Markup("</");
    pieces.Markup(element.name->bytes);
    pieces.Markup(">");
  }
  pieces.End(node);
}

void Write(const XmlNode& node, bool outermost, XmlPieces& pieces) {
  const XmlTreeNode& tree = *node.Tree();
  const std::string_view content = tree.kind == XmlKind::Element ? "" : tree.Content();
  switch (tree.kind) {
    case XmlKind::Element: return WriteElement(node, outermost, pieces);
    case XmlKind::Text: return pieces.Text(content, XmlTextPlace::Content);
    case XmlKind::Cdata: return pieces.Text(content, XmlTextPlace::Cdata);
    case XmlKind::Comment:
      pieces.Markup("<!--");
      pieces.Markup(content);
      return pieces.Markup("-->");
    case XmlKind::Instruction:
      pieces.Markup("<?");
      pieces.Markup(tree.name->bytes);
      if (!content.empty()) pieces.Markup(" ");
      pieces.Markup(content);
      return pieces.Markup("?>");
  }
}

// A document as one text.
class TextOfNode : public XmlPieces {
 public:
  void Markup(std::string_view bytes) override { text += bytes; }
  void Text(std::string_view content, XmlTextPlace place) override {
    if (place == XmlTextPlace::Cdata)
      text.append("<![CDATA[").append(content).append("]]>");
    else
      AppendXmlText(text, content, place != XmlTextPlace::Content);
  }
  std::string text;
};

}  // namespace

void AppendXmlText(std::string& target, std::string_view text, bool attribute) {
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

void WriteXml(const XmlNode& node, XmlPieces& pieces) {
  if (node) Write(node, true, pieces);
}

}  // namespace rastrel::xml

bool SaveNodeXml(const XmlNode& node, std::wstring_view path) {
  auto file = rastrel::os::CreateForWriting(path);
  if (!file) return false;
  rastrel::xml::TextOfNode text;
  rastrel::xml::WriteXml(node, text);
  return static_cast<bool>(rastrel::os::WriteAll(file->Get(), text.text));
}
