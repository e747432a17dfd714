#include "rastrel/imports/xml_stream.h"

#include <vector>

#include "rastrel/imports/xml_limits.h"
#include "rastrel/imports/xml_source.h"
#include "rastrel/imports/xml_tree.h"

namespace rastrel::imports {
namespace {

// Asks the handler about each element and collects what it wants. All memory is taken from one
// arena in the order of the elements, and given back when they end.
class Streamer : public XmlEvents {
 public:
  Streamer(XmlStreamHandler& handler, const XmlNames& names, XmlBlanks blanks)
      : m_Handler(handler), m_Names(names), m_Builder(m_Arena, blanks == XmlBlanks::kKeep) {}

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

  [[nodiscard]] std::optional<std::wstring> Refusal() const override {
    if (m_Handler.Refusal()) return m_Handler.Refusal();
    if (m_Arena.Size() + m_Names.Size() + m_Builder.Pending() <= limits::kStreamBytes)
      return std::nullopt;
    return L"a part of the document takes more than " + std::to_wstring(limits::kStreamBytes) +
           L" bytes of memory";
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
    const int depth = static_cast<int>(m_Entered.size());
    const StreamChoice choice = m_Handler.Begin(name->local, XmlNode(element), depth);
    m_Refused = m_Handler.Refusal().has_value();
    switch (choice) {
      case StreamChoice::kSkip:
        m_Skipped = 1;
        m_Arena.GoBack(before);
        break;
      case StreamChoice::kEnter: m_Entered.push_back({element, before}); break;
      case StreamChoice::kNode:
        m_Collected = {element, before};
        m_Builder.Open(element);
        break;
    }
  }

  void HandOver() {
    m_Handler.Node(XmlNode(m_Collected.element));
    m_Refused = m_Handler.Refusal().has_value();
    m_Arena.GoBack(m_Collected.before);
  }

  void EndEntered() {
    const Entered ended = m_Entered.back();
    m_Entered.pop_back();
    m_Handler.End(ended.element->name->local, static_cast<int>(m_Entered.size()));
    m_Refused = m_Handler.Refusal().has_value();
    m_Arena.GoBack(ended.before);
  }

  XmlStreamHandler& m_Handler;
  const XmlNames& m_Names;
  XmlArena m_Arena;
  XmlTreeBuilder m_Builder;
  int m_Skipped = 0;  // elements that are open, from the one that was skipped on
  std::vector<Entered> m_Entered;
  Entered m_Collected{};
};

}  // namespace

XmlStreamHandler::~XmlStreamHandler() = default;

bool StreamXmlFile(std::wstring_view path, XmlStreamHandler& handler, XmlBlanks blanks) {
  XmlNames names;
  Streamer streamer(handler, names, blanks);
  return ParseXmlFile(path, names, streamer);
}

}  // namespace rastrel::imports
