#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/xml/arena.h"
#include "rastrel/xml/names.h"

/// The tree that XmlNode refers to, for the layer's own sources. Made for speed: all of a document
/// lies in one arena in the order of reading, with texts in UTF-8 and each name once.
namespace rastrel::xml {

enum class XmlKind : std::uint8_t { Element, Text, Cdata, Comment, Instruction };

/// One attribute of an element.
struct XmlTreeAttribute {
  const XmlName* name;
  const char* value;
  std::uint32_t length;
  bool declaresNamespace;  ///< xmlns or xmlns:prefix

  [[nodiscard]] std::string_view Value() const { return {value, length}; }
};

/// One node. An element's attributes follow it directly.
struct XmlTreeNode {
  const XmlTreeNode* parent;  ///< null for the document element
  XmlTreeNode* next;          ///< of the same parent
  union {
    XmlTreeNode* child;   ///< an element's first one
    const char* content;  ///< any other's text; an instruction's data
  };
  const XmlName* name;   ///< of an element or instruction; else null
  std::uint32_t length;  ///< of the content in bytes, or how many attributes
  XmlKind kind : 7;
  bool isWhitespace : 1;    ///< a text of whitespace alone, kept on demand and no child
  std::uint32_t line : 24;  ///< of an element: where its start tag ends, from 1; else 0

  [[nodiscard]] std::string_view Content() const { return {content, length}; }
  [[nodiscard]] std::span<const XmlTreeAttribute> Attributes() const {
    return {reinterpret_cast<const XmlTreeAttribute*>(this + 1), length};
  }
};
static_assert(sizeof(XmlTreeNode) % alignof(XmlTreeAttribute) == 0);
/// The last line that a node can name; later ones count as this one.
inline constexpr std::uint32_t XmlLastLine = (1U << 24) - 1;

/// Makes an element in memory for it and its attributes, which follow it and are still to be made.
/// It has no children and no neighbor.
[[nodiscard]] inline XmlTreeNode* MakeElementAt(void* memory, const XmlName* name,
                                                std::size_t attributes, std::uint32_t line,
                                                const XmlTreeNode* parent) {
  auto* const node = new (memory) XmlTreeNode;
  node->parent = parent;
  node->next = nullptr;
  node->child = nullptr;
  node->name = name;
  node->length = static_cast<std::uint32_t>(attributes);
  node->kind = XmlKind::Element;
  node->isWhitespace = false;
  node->line = std::min(line, XmlLastLine) & XmlLastLine;
  return node;
}

/// Makes any other node. `content` is borrowed; `name` is an instruction's target, or null.
[[nodiscard]] inline XmlTreeNode* MakeContentAt(void* memory, XmlKind kind, const XmlName* name,
                                                std::string_view content, bool isWhitespace,
                                                const XmlTreeNode* parent) {
  auto* const node = new (memory) XmlTreeNode;
  node->parent = parent;
  node->next = nullptr;
  node->content = content.data();
  node->name = name;
  node->length = static_cast<std::uint32_t>(content.size());
  node->kind = kind;
  node->isWhitespace = isWhitespace;
  node->line = 0;
  return node;
}

/// An element whose children are being read.
struct XmlTreeLevel {
  XmlTreeNode* element;
  XmlTreeNode* last;  ///< its last child; null without one

  void Append(XmlTreeNode* child) {
    (last == nullptr ? element->child : last->next) = child;
    last = child;
  }
};

/// A loaded document. Counted by its nodes' handles.
struct XmlDocument {
  std::atomic<std::size_t> handles = 0;
  XmlNames names;
  XmlArena arena;
};

/// An attribute as the parser reports it. The value is valid during the call only.
struct XmlStartAttribute {
  const XmlName* name;
  std::string_view value;
  bool declaresNamespace;
};

/// Space, tab, carriage return or line feed.
[[nodiscard]] constexpr bool IsXmlWhitespace(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}
/// The text without whitespace at both ends.
[[nodiscard]] std::string_view TrimWhitespace(std::string_view text);

/// Builds the nodes below one element in an arena.
class XmlTreeBuilder {
 public:
  XmlTreeBuilder(XmlArena& arena, bool keepsWhitespace)
      : m_Arena(arena), m_KeepsWhitespace(keepsWhitespace) {}

  /// Makes an element without joining it to anything but its parent.
  [[nodiscard]] XmlTreeNode* Make(const XmlName* name,
                                  std::span<const XmlStartAttribute> attributes, std::uint32_t line,
                                  const XmlTreeNode* parent);
  /// From here on everything is a part of `root`. REQUIRES: no element is open.
  void Open(XmlTreeNode* root);
  /// An element begins in the one that is open.
  void Start(const XmlName* name, std::span<const XmlStartAttribute> attributes,
             std::uint32_t line);
  /// The element that is open ends. True if it was the root.
  bool End();
  /// A piece of text; one that follows directly belongs to the same text.
  void Text(std::string_view bytes);
  void Cdata(std::string_view bytes);
  void Comment(std::string_view bytes);
  void Instruction(const XmlName* target, std::string_view data);

  /// Whether an element is open.
  [[nodiscard]] bool IsOpen() const { return !m_Open.empty(); }
  /// Bytes of text that are still to become a node.
  [[nodiscard]] std::size_t Pending() const { return m_Text.size(); }

 private:
  void Flush() {
    if (m_OnePiece != nullptr || !m_Text.empty()) EndText();
  }
  void EndText();
  XmlTreeNode* AddContent(XmlKind kind, const XmlName* name, std::string_view content,
                          bool isWhitespace = false);

  XmlArena& m_Arena;
  bool m_KeepsWhitespace;
  std::vector<XmlTreeLevel> m_Open;
  XmlTreeNode* m_OnePiece = nullptr;  // holds the first piece of the text that is being read
  std::string m_Text;  // all of it, if there is more, or if it begins with whitespace
};

}  // namespace rastrel::xml
