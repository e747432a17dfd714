#include "rastrel/xml/tree.h"

#include <algorithm>
#include <new>

#include "rastrel/xml/node.h"

namespace rastrel::xml {

void XmlNode::Retain(XmlDocument& document) noexcept {
  document.handles.fetch_add(1, std::memory_order_relaxed);
}

void XmlNode::Release(XmlDocument& document) noexcept {
  if (document.handles.fetch_sub(1, std::memory_order_acq_rel) == 1) delete &document;
}

std::string_view TrimWhitespace(std::string_view text) {
  while (!text.empty() && IsXmlWhitespace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsXmlWhitespace(text.back())) text.remove_suffix(1);
  return text;
}

// The node, its attributes and their values lie in one piece.
XmlTreeNode* XmlTreeBuilder::Make(const XmlName* name,
                                  std::span<const XmlStartAttribute> attributes, std::uint32_t line,
                                  const XmlTreeNode* parent) {
  std::size_t size = sizeof(XmlTreeNode) + attributes.size() * sizeof(XmlTreeAttribute);
  const std::size_t valuesAt = size;
  for (const XmlStartAttribute& attribute : attributes) size += attribute.value.size();
  auto* const place = static_cast<std::byte*>(m_Arena.Allocate(size));
  XmlTreeNode* const node = MakeElementAt(place, name, attributes.size(), line, parent);
  auto* slot = reinterpret_cast<XmlTreeAttribute*>(node + 1);
  auto* value = reinterpret_cast<char*>(place + valuesAt);
  for (const XmlStartAttribute& attribute : attributes) {
    new (slot++)
        XmlTreeAttribute{attribute.name, value, static_cast<std::uint32_t>(attribute.value.size()),
                         attribute.declaresNamespace};
    value = std::copy(attribute.value.begin(), attribute.value.end(), value);
  }
  return node;
}

void XmlTreeBuilder::Open(XmlTreeNode* root) { m_Open.push_back({root, nullptr}); }

void XmlTreeBuilder::Start(const XmlName* name, std::span<const XmlStartAttribute> attributes,
                           std::uint32_t line) {
  Flush();
  XmlTreeNode* const node = Make(name, attributes, line, m_Open.back().element);
  m_Open.back().Append(node);
  m_Open.push_back({node, nullptr});
}

bool XmlTreeBuilder::End() {
  Flush();
  m_Open.pop_back();
  return m_Open.empty();
}

void XmlTreeBuilder::Cdata(std::string_view bytes) {
  Flush();
  AddContent(XmlKind::Cdata, nullptr, bytes);
}

void XmlTreeBuilder::Comment(std::string_view bytes) {
  Flush();
  AddContent(XmlKind::Comment, nullptr, bytes);
}

void XmlTreeBuilder::Instruction(const XmlName* target, std::string_view data) {
  Flush();
  AddContent(XmlKind::Instruction, target, data);
}

// Text comes in pieces, but nearly always in one, which then needs no other place than its node.
// One that begins with whitespace may turn out to be nothing.
void XmlTreeBuilder::Text(std::string_view bytes) {
  if (bytes.empty()) return;
  if (m_OnePiece == nullptr && m_Text.empty() && !IsXmlWhitespace(bytes.front())) {
    m_OnePiece = AddContent(XmlKind::Text, nullptr, bytes);
    return;
  }
  if (m_OnePiece != nullptr && m_Text.empty()) m_Text = m_OnePiece->Content();
  m_Text.append(bytes);
}

void XmlTreeBuilder::EndText() {
  if (m_OnePiece != nullptr) {
    if (!m_Text.empty()) {
      const std::string_view content = m_Arena.Copy(m_Text);
      m_OnePiece->content = content.data();
      m_OnePiece->length = static_cast<std::uint32_t>(content.size());
    }
    m_OnePiece = nullptr;
  } else {
    const bool isWhitespace = std::all_of(m_Text.begin(), m_Text.end(), IsXmlWhitespace);
    if (!isWhitespace || m_KeepsWhitespace)
      AddContent(XmlKind::Text, nullptr, m_Text, isWhitespace);
  }
  m_Text.clear();
}

XmlTreeNode* XmlTreeBuilder::AddContent(XmlKind kind, const XmlName* name, std::string_view content,
                                        bool isWhitespace) {
  const std::string_view copy = m_Arena.Copy(content);
  XmlTreeNode* const node = MakeContentAt(m_Arena.Allocate(sizeof(XmlTreeNode)), kind, name, copy,
                                          isWhitespace, m_Open.back().element);
  m_Open.back().Append(node);
  return node;
}

}  // namespace rastrel::xml
