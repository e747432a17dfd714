#include "rastrel/xml/walk.h"

#include "rastrel/xml/tree.h"

namespace rastrel::xml {
namespace {

bool HoldsText(const XmlTreeNode& node, bool blanks) {
  return node.kind == XmlKind::Cdata || (node.kind == XmlKind::Text && (blanks || !node.blank));
}

// Appends the texts below an element. Elements lie no deeper than the layer's limit.
void AppendTexts(const XmlTreeNode& element, bool blanks, std::string& text) {
  for (const XmlTreeNode* node = element.child; node != nullptr; node = node->next) {
    if (node->kind == XmlKind::Element) {
      AppendTexts(*node, blanks, text);
    } else if (HoldsText(*node, blanks)) {
      text.append(node->Content());
    }
  }
}

std::string_view TextOf(const XmlTreeNode* node, bool blanks, std::string& scratch) {
  if (node == nullptr) return {};
  if (node->kind != XmlKind::Element) return node->Content();
  const XmlTreeNode* const child = node->child;
  if (child == nullptr) return {};
  if (child->next == nullptr && HoldsText(*child, blanks)) return child->Content();
  scratch.clear();
  AppendTexts(*node, blanks, scratch);
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
  return TrimBlanks(TextOf(node.Tree(), false, scratch));
}

std::string_view RawTextBytes(const XmlNode& node, std::string& scratch) {
  return TextOf(node.Tree(), true, scratch);
}

}  // namespace rastrel::xml
