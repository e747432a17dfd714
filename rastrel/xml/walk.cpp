#include "rastrel/xml/walk.h"

#include "rastrel/xml/tree.h"

namespace rastrel::xml {
namespace {

bool HoldsText(const XmlTreeNode& node, bool whitespace) {
  return node.kind == XmlKind::Cdata ||
         (node.kind == XmlKind::Text && (whitespace || !node.isWhitespace));
}

// Appends the texts below an element. Elements lie no deeper than the layer's limit.
void AppendTexts(const XmlTreeNode& element, bool whitespace, std::string& text) {
  for (const XmlTreeNode* node = element.child; node != nullptr; node = node->next) {
    if (node->kind == XmlKind::Element) {
      AppendTexts(*node, whitespace, text);
    } else if (HoldsText(*node, whitespace)) {
      text.append(node->Content());
    }
  }
}

std::string_view TextOf(const XmlTreeNode* node, bool whitespace, std::string& scratch) {
  if (node == nullptr) return {};
  if (node->kind != XmlKind::Element) return node->Content();
  const XmlTreeNode* const child = node->child;
  if (child == nullptr) return {};
  if (child->next == nullptr && HoldsText(*child, whitespace)) return child->Content();
  scratch.clear();
  AppendTexts(*node, whitespace, scratch);
  return scratch;
}

}  // namespace

XmlNode FirstPiece(const XmlNode& node) {
  if (!IsElement(node) || node.Tree()->child == nullptr) return {};
  return XmlNode(node.Tree()->child, node.Document());
}

XmlNode NextPiece(const XmlNode& node) {
  if (!node || node.Tree()->next == nullptr) return {};
  return XmlNode(node.Tree()->next, node.Document());
}

bool IsText(const XmlNode& node) {
  return node && (node.Tree()->kind == XmlKind::Text || node.Tree()->kind == XmlKind::Cdata);
}

std::string_view TextBytes(const XmlNode& node, std::string& scratch) {
  return TrimWhitespace(TextOf(node.Tree(), false, scratch));
}

std::string_view RawTextBytes(const XmlNode& node, std::string& scratch) {
  return TextOf(node.Tree(), true, scratch);
}

}  // namespace rastrel::xml
