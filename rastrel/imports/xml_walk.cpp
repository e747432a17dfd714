#include "rastrel/imports/xml_walk.h"

#include "rastrel/imports/xml_tree.h"

namespace rastrel::imports {
namespace {

const XmlTreeNode* SkipBlanks(const XmlTreeNode* node) {
  while (node != nullptr && node->blank) node = node->next;
  return node;
}

bool HoldsText(const XmlTreeNode& node, bool blanks) {
  return node.kind == XmlKind::kCdata || (node.kind == XmlKind::kText && (blanks || !node.blank));
}

// Appends the texts below an element. Elements lie no deeper than the layer's limit.
void AppendTexts(const XmlTreeNode& element, bool blanks, std::string& text) {
  for (const XmlTreeNode* node = element.child; node != nullptr; node = node->next) {
    if (node->kind == XmlKind::kElement) {
      AppendTexts(*node, blanks, text);
    } else if (HoldsText(*node, blanks)) {
      text.append(node->Content());
    }
  }
}

std::string_view TextOf(const XmlTreeNode* node, bool blanks, std::string& scratch) {
  if (node == nullptr) return {};
  if (node->kind != XmlKind::kElement) return node->Content();
  const XmlTreeNode* const child = node->child;
  if (child == nullptr) return {};
  if (child->next == nullptr && HoldsText(*child, blanks)) return child->Content();
  scratch.clear();
  AppendTexts(*node, blanks, scratch);
  return scratch;
}

}  // namespace

XmlNode FirstChild(const XmlNode& node) {
  if (!IsElement(node)) return {};
  const XmlTreeNode* const child = SkipBlanks(node.Tree()->child);
  return child == nullptr ? XmlNode() : XmlNode(child, node.Document());
}

XmlNode NextSibling(const XmlNode& node) {
  // The document element stands alone, and an announced one has no neighbours yet.
  if (!node) return {};
  const XmlTreeNode* const next = SkipBlanks(node.Tree()->next);
  return next == nullptr ? XmlNode() : XmlNode(next, node.Document());
}

bool IsElement(const XmlNode& node) { return node && node.Tree()->kind == XmlKind::kElement; }

std::wstring_view BaseName(const XmlNode& node) {
  return IsElement(node) ? node.Tree()->name->local : std::wstring_view();
}

std::string_view AttributeBytes(const XmlNode& node, std::wstring_view name) {
  if (!IsElement(node)) return {};
  for (const XmlTreeAttribute& attribute : node.Tree()->Attributes())
    if (attribute.name->qualified == name) return attribute.Value();
  return {};
}

std::string_view TextBytes(const XmlNode& node, std::string& scratch) {
  return TrimBlanks(TextOf(node.Tree(), false, scratch));
}

std::string_view RawTextBytes(const XmlNode& node, std::string& scratch) {
  return TextOf(node.Tree(), true, scratch);
}

}  // namespace rastrel::imports
