#pragma once

#include <utility>

namespace rastrel::xml {

struct XmlTreeNode;
struct XmlDocument;

/// A node of an XML document: an element, a text, a CDATA section, a comment or an instruction. A
/// small value, copied at will. It keeps its whole document alive, as a counted reference would;
/// any thread may hold, copy and drop nodes of one document, and nobody changes a document. A node
/// that a stream lends (xml/stream.h) keeps nothing alive and ends with the call that lent it.
///
/// Default-constructed it is none, which every function of the layer takes for a node without a
/// name, children, text and attributes.
class XmlNode {
 public:
  XmlNode() = default;
  /// The layer alone makes nodes. Without a document the node is a borrowed one.
  explicit XmlNode(const XmlTreeNode* node, XmlDocument* document = nullptr) noexcept
      : m_Node(node), m_Document(document) {
    Retain();
  }
  XmlNode(const XmlNode& other) noexcept : m_Node(other.m_Node), m_Document(other.m_Document) {
    Retain();
  }
  XmlNode(XmlNode&& other) noexcept
      : m_Node(std::exchange(other.m_Node, nullptr)),
        m_Document(std::exchange(other.m_Document, nullptr)) {}
  XmlNode& operator=(XmlNode other) noexcept {
    std::swap(m_Node, other.m_Node);
    std::swap(m_Document, other.m_Document);
    return *this;
  }
  ~XmlNode() {
    if (m_Document != nullptr) Release(*m_Document);
  }

  /// Whether there is a node.
  explicit operator bool() const noexcept { return m_Node != nullptr; }
  /// The same node of the same document.
  bool operator==(const XmlNode& other) const noexcept { return m_Node == other.m_Node; }

  /// The node of the tree, for the layer itself; null for none.
  [[nodiscard]] const XmlTreeNode* Tree() const noexcept { return m_Node; }
  /// The document that the handle keeps alive; null for none and for a borrowed node.
  [[nodiscard]] XmlDocument* Document() const noexcept { return m_Document; }

 private:
  void Retain() noexcept {
    if (m_Document != nullptr) Retain(*m_Document);
  }
  static void Retain(XmlDocument& document) noexcept;
  static void Release(XmlDocument& document) noexcept;

  const XmlTreeNode* m_Node = nullptr;
  XmlDocument* m_Document = nullptr;
};

}  // namespace rastrel::xml

using rastrel::xml::XmlNode;
