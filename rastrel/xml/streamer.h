#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/xml/arena.h"
#include "rastrel/xml/elements.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/parser.h"
#include "rastrel/xml/stream.h"
#include "rastrel/xml/tree.h"

namespace rastrel::xml {

/// Asks a handler about each element and collects those it wants. All memory is taken from one
/// arena in the order of the elements, and given back when they end. Elements may come in parts and
/// whole, by turns; the handler sees no difference.
class XmlStreamer : public XmlEvents, public XmlElements {
 public:
  XmlStreamer(XmlStreamHandler& handler, const XmlNames& names, XmlWhitespace whitespace)
      : m_Handler(handler),
        m_Names(names),
        m_KeepsWhitespace(whitespace == XmlWhitespace::Keep),
        m_Builder(m_Arena, m_KeepsWhitespace) {}

  void Start(const XmlName* name, std::span<const XmlStartAttribute> attributes,
             std::uint32_t line) override {
    if (m_Builder.IsOpen()) return m_Builder.Start(name, attributes, line);
    if (m_Skipped > 0) {
      ++m_Skipped;
      return;
    }
    Announce(name, attributes, line);
  }

  void End() override {
    if (m_Builder.IsOpen()) {
      if (m_Builder.End()) HandOver();
    } else if (m_Skipped > 0) {
      --m_Skipped;
    } else {
      EndEntered();
    }
  }

  void Text(std::string_view bytes) override {
    if (m_Builder.IsOpen()) m_Builder.Text(bytes);
  }
  void Cdata(std::string_view bytes) override {
    if (m_Builder.IsOpen()) m_Builder.Cdata(bytes);
  }
  void Comment(std::string_view bytes) override {
    if (m_Builder.IsOpen()) m_Builder.Comment(bytes);
  }
  void Instruction(const XmlName* target, std::string_view data) override {
    if (m_Builder.IsOpen()) m_Builder.Instruction(target, data);
  }

  [[nodiscard]] const XmlName* Collected() const override {
    return m_Builder.IsOpen() ? m_Collected.element->name : nullptr;
  }

  [[nodiscard]] std::optional<StreamChoice> Choose(XmlTreeNode& start) override {
    if (m_Skipped > 0) return StreamChoice::Skip;
    start.parent = m_Entered.empty() ? nullptr : m_Entered.back().element;
    if (!m_Choice) m_Choice = Ask(start);
    return m_Refused ? std::nullopt : m_Choice;
  }

  void Take(const XmlTreeNode& element) override {
    if (m_Skipped > 0) return;
    const bool isWanted = m_Choice == StreamChoice::Node;
    m_Choice.reset();
    if (!isWanted) return;
    m_Handler.Node(XmlNode(&element));
    m_Refused = m_Handler.Refused();
  }

  [[nodiscard]] bool KeepsWhitespace() const override { return m_KeepsWhitespace; }

  [[nodiscard]] Expected<void> State() const override {
    if (m_Handler.Refused()) return m_Handler.State();
    if (m_Arena.Size() + m_Names.Size() + m_Builder.Pending() <= limits::StreamBytes) return {};
    return FailureOf("a part of the document takes more than " +
                     std::to_string(limits::StreamBytes) + " bytes of memory");
  }

 private:
  struct Entered {
    const XmlTreeNode* element;
    XmlArena::Mark before;
  };

  void Announce(const XmlName* name, std::span<const XmlStartAttribute> attributes,
                std::uint32_t line) {
    const XmlArena::Mark before = m_Arena.Here();
    XmlTreeNode* const element = m_Builder.Make(
        name, attributes, line, m_Entered.empty() ? nullptr : m_Entered.back().element);
    const StreamChoice choice = m_Choice ? *m_Choice : Ask(*element);
    m_Choice.reset();
    switch (choice) {
      case StreamChoice::Skip:
        m_Skipped = 1;
        m_Arena.GoBack(before);
        break;
      case StreamChoice::Enter: m_Entered.push_back({element, before}); break;
      case StreamChoice::Node:
        m_Collected = {element, before};
        m_Builder.Open(element);
        break;
    }
  }

  StreamChoice Ask(const XmlTreeNode& start) {
    const StreamChoice choice =
        m_Handler.Begin(start.name->local, XmlNode(&start), static_cast<int>(m_Entered.size()));
    m_Refused = m_Handler.Refused();
    return choice;
  }

  void HandOver() {
    m_Handler.Node(XmlNode(m_Collected.element));
    m_Refused = m_Handler.Refused();
    m_Arena.GoBack(m_Collected.before);
  }

  void EndEntered() {
    const Entered ended = m_Entered.back();
    m_Entered.pop_back();
    m_Handler.End(ended.element->name->local, static_cast<int>(m_Entered.size()));
    m_Refused = m_Handler.Refused();
    m_Arena.GoBack(ended.before);
  }

  XmlStreamHandler& m_Handler;
  const XmlNames& m_Names;
  bool m_KeepsWhitespace;
  XmlArena m_Arena;
  XmlTreeBuilder m_Builder;
  int m_Skipped = 0;  // elements that are open, from the one that was skipped on
  std::vector<Entered> m_Entered;
  Entered m_Collected{};
  std::optional<StreamChoice> m_Choice;  // for an element that is still to come
};

}  // namespace rastrel::xml
