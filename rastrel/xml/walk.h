#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/xml/node.h"
#include "rastrel/xml/tree.h"

/// The node functions of xml/layer.h without a copy, for readers that meet millions of nodes. Same
/// nodes, same names, same texts. Bytes are UTF-8 and valid as long as the node is. A name that is
/// asked for often is best a `constexpr std::wstring_view`, whose length is known beforehand.
namespace rastrel::xml {

/// The first child and the next of the same parent; none after the last.
[[nodiscard]] inline XmlNode FirstChild(const XmlNode& node);
[[nodiscard]] inline XmlNode NextSibling(const XmlNode& node);

/// The same, with texts of whitespace alone where the stream keeps them (XmlWhitespace::Keep).
[[nodiscard]] XmlNode FirstPiece(const XmlNode& node);
[[nodiscard]] XmlNode NextPiece(const XmlNode& node);

/// Whether the node is a text or a CDATA section.
[[nodiscard]] bool IsText(const XmlNode& node);
/// Whether the node is an element (and has a name and attributes).
[[nodiscard]] inline bool IsElement(const XmlNode& node);
/// The local name; empty if the node is no element.
[[nodiscard]] inline std::wstring_view BaseName(const XmlNode& node);
/// Whether the node is an element of that local name.
[[nodiscard]] inline bool IsNamed(const XmlNode& node, std::wstring_view name);

/// An attribute's value as AttributeString returns it; empty if it is absent.
[[nodiscard]] inline std::string_view AttributeBytes(const XmlNode& node, std::wstring_view name);
/// The text as NodeText returns it. Lies in the node or, where it is joined of several, in
/// `scratch`.
[[nodiscard]] std::string_view TextBytes(const XmlNode& node, std::string& scratch);
/// The same with the whitespace at both ends, and with texts of whitespace alone where the stream
/// keeps them: the text that the writer of the document meant a person to see.
[[nodiscard]] std::string_view RawTextBytes(const XmlNode& node, std::string& scratch);

// Names are a few characters, for which a call costs more than the comparison.
inline bool SameName(std::wstring_view left, std::wstring_view right) {
  if (left.size() != right.size()) return false;
  for (std::size_t index = 0; index < left.size(); ++index)
    if (left[index] != right[index]) return false;
  return true;
}

inline XmlNode NodeFrom(const XmlTreeNode* node, XmlDocument* document) {
  while (node != nullptr && node->isWhitespace) node = node->next;
  return node == nullptr ? XmlNode() : XmlNode(node, document);
}

inline bool IsElement(const XmlNode& node) { return node && node.Tree()->kind == XmlKind::Element; }

inline XmlNode FirstChild(const XmlNode& node) {
  return IsElement(node) ? NodeFrom(node.Tree()->child, node.Document()) : XmlNode();
}

inline XmlNode NextSibling(const XmlNode& node) {
  return node ? NodeFrom(node.Tree()->next, node.Document()) : XmlNode();
}

inline std::wstring_view BaseName(const XmlNode& node) {
  return IsElement(node) ? node.Tree()->name->local : std::wstring_view();
}

inline bool IsNamed(const XmlNode& node, std::wstring_view name) {
  return IsElement(node) && SameName(node.Tree()->name->local, name);
}

inline std::string_view AttributeBytes(const XmlNode& node, std::wstring_view name) {
  if (!IsElement(node)) return {};
  for (const XmlTreeAttribute& attribute : node.Tree()->Attributes())
    if (SameName(attribute.name->qualified, name)) return attribute.Value();
  return {};
}

}  // namespace rastrel::xml
