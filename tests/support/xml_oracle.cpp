#include "tests/support/xml_oracle.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"
#include "rastrel/xml/load.h"
#include "rastrel/xml/source.h"
#include "rastrel/xml/stream.h"
#include "tests/support/memory_file.h"

namespace rastrel::test {
namespace {

constexpr std::string_view Blanks = " \t\r\n";

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(Blanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(Blanks) + 1 - begin);
}

std::string Text(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

bool IsBlankText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE && Trimmed(Text(node->content)).empty();
}

std::string LiteralText(const xmlNode* node) {
  if (node->type != XML_ELEMENT_NODE) return Text(node->content);
  std::string text;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    const bool counts = child->type == XML_ELEMENT_NODE || child->type == XML_TEXT_NODE ||
                        child->type == XML_CDATA_SECTION_NODE;
    if (counts && !IsBlankText(child)) text += LiteralText(child);
  }
  return text;
}

void AddAttribute(std::string& text, const std::string& name, const std::string& value) {
  if (!value.empty()) text += " " + name + "=[" + value + "]";
}

std::string LiteralNode(const xmlNode* node) {
  std::string text = "(";
  if (node->type == XML_ELEMENT_NODE) {
    text += Text(node->name);
    for (const xmlNs* space = node->nsDef; space != nullptr; space = space->next)
      AddAttribute(text, space->prefix == nullptr ? "xmlns" : Text(space->prefix),
                   Text(space->href));
    for (const xmlAttr* attribute = node->properties; attribute != nullptr;
         attribute = attribute->next)
      AddAttribute(text, Text(attribute->name),
                   attribute->children == nullptr ? "" : Text(attribute->children->content));
  }
  text += "|" + Trimmed(LiteralText(node)) + "|";
  if (node->type == XML_ELEMENT_NODE)
    for (const xmlNode* child = node->children; child != nullptr; child = child->next)
      if (!IsBlankText(child)) text += LiteralNode(child);
  return text + ")";
}

// A few bytes at a time, and not always as many.
class Dribble : public xml::XmlSource {
 public:
  Dribble(std::string_view bytes, std::size_t most) : m_Bytes(bytes), m_Most(most) {}
  [[nodiscard]] Expected<std::size_t> Read(std::span<char> bytes) override {
    m_Step = m_Step % m_Most + 1;
    const std::string_view piece = m_Bytes.substr(0, std::min(m_Step, bytes.size()));
    std::copy(piece.begin(), piece.end(), bytes.begin());
    m_Bytes.remove_prefix(piece.size());
    return piece.size();
  }

 private:
  std::string_view m_Bytes;
  std::size_t m_Most;
  std::size_t m_Step = 0;
};

// Collects the document at the given depth, as dumps of its parts.
class Collector : public xml::XmlStreamHandler {
 public:
  explicit Collector(int depth) : m_Depth(depth) {}
  xml::StreamChoice Begin(std::wstring_view, const XmlNode&, int depth) override {
    return depth == m_Depth ? xml::StreamChoice::Node : xml::StreamChoice::Enter;
  }
  void Node(const XmlNode& node) override { m_Dump += DumpOf(node); }
  void End(std::wstring_view, int) override {}
  [[nodiscard]] const std::string& Dump() const { return m_Dump; }

 private:
  int m_Depth;
  std::string m_Dump;
};

std::string Loaded(std::string_view document, std::size_t pieces) {
  const auto load = [&] {
    if (pieces > 0) {
      Dribble source(document, pieces);
      return xml::LoadXml(source, xml::XmlEncoding::ByDocument);
    }
    xml::XmlMemorySource source(document);
    return xml::LoadXml(source, xml::XmlEncoding::ByDocument);
  };
  const auto root = load();
  if (!root) return {};
  return *root ? DumpOf(*root) : "(a document without an element)";
}

std::string ElementChildren(const XmlNode& root) {
  std::string text;
  int count = 0;
  std::wstring name;
  for (const XmlNode& child : NodeChildren(root, count))
    if (NodeBaseName(child, name)) text += DumpOf(child);
  return text;
}

// Counts the faults, in the number that the context carries for its user. Any text names a
// namespace.
void CountFault(void* user, xmlErrorPtr error) {
  const bool name = error->domain == XML_FROM_NAMESPACE && error->code == XML_WAR_NS_URI;
  auto& count = *static_cast<int*>(static_cast<xmlParserCtxt*>(user)->_private);
  if (error->level >= XML_ERR_ERROR && !name) ++count;
}

}  // namespace

std::string DumpOf(const XmlNode& node) {
  std::wstring name;
  std::wstring content;
  NodeBaseName(node, name);
  std::string text = "(" + os::Utf8FromWide(name);
  for (const auto& [key, value] : AttributeList(node))
    AddAttribute(text, os::Utf8FromWide(key), os::Utf8FromWide(value));
  NodeText(node, content);
  text += "|" + os::Utf8FromWide(content) + "|";
  int count = 0;
  for (const XmlNode& child : NodeChildren(node, count)) text += DumpOf(child);
  return text + ")";
}

std::optional<std::string> LiteralDump(std::string_view document) {
  int faults = 0;
  const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)> context(xmlNewParserCtxt(),
                                                                         xmlFreeParserCtxt);
  context->_private = &faults;
  context->sax->serror = CountFault;
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> tree(
      xmlCtxtReadMemory(
          context.get(), document.data(), static_cast<int>(document.size()), nullptr, nullptr,
          XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
      xmlFreeDoc);
  if (!tree || context->wellFormed == 0 || faults > 0) return std::nullopt;
  return LiteralNode(xmlDocGetRootElement(tree.get()));
}

bool IsBeyondTheLayer(std::string_view document) {
  if (document.find("<!DOCTYPE") != std::string_view::npos) return true;
  const std::string_view head = document.substr(0, 200);
  return head.find("<?xml") != std::string_view::npos ||
         document.find('\0') != std::string_view::npos || head.starts_with("\xFE\xFF") ||
         head.starts_with("\xFF\xFE");
}

std::string DifferencesFromLiteral(std::string_view document, std::size_t pieces) {
  const std::string whole = Loaded(document, 0);
  const std::string dribbled = Loaded(document, pieces);
  // The parser takes the mark of such a comment for all of it where a piece ends there.
  const bool oddComment = document.find("<!-->") != std::string_view::npos ||
                          document.find("<!--->") != std::string_view::npos;
  if (whole != dribbled && !oddComment) return "in pieces\n" + whole + "\n" + dribbled;

  const MemoryFile file;
  file.Write(document);
  Collector rooted(0);
  const bool streamed = xml::StreamXmlFile(file.Wide(), rooted);
  if (streamed != !whole.empty()) return "streamed or not\n" + whole;
  if (streamed && rooted.Dump() != whole) return "streamed\n" + whole + "\n" + rooted.Dump();
  Collector inner(1);
  const bool parts = xml::StreamXmlFile(file.Wide(), inner);
  if (parts != streamed) return "parts streamed or not\n" + whole;
  if (parts && inner.Dump() != ElementChildren(LoadXmlFile(file.Wide())))
    return "streamed in parts\n" + whole + "\n" + inner.Dump();

  const auto literal = LiteralDump(document);
  if (whole.empty() && literal && !IsBeyondTheLayer(document)) return "refused\n" + *literal;
  if (!whole.empty() && !literal) return "taken\n" + whole;
  // The literal tree makes one node of neighbouring sections.
  const bool joined = document.find("]]><![CDATA[") != std::string_view::npos;
  if (!whole.empty() && !joined && literal != whole) return "literally\n" + whole + "\n" + *literal;
  return {};
}

std::string XmlDocuments::Next() {
  std::string text;
  if (Pick(4) == 0) text += "<?xml version='1.0' encoding='UTF-8'?>\n";
  if (Pick(8) == 0) text += "<!-- before --><?before x?>";
  Element(text, 0);
  if (Pick(8) == 0) text += "\n<!-- behind --><?behind?>\n";
  if (Pick(3) == 0) Spoil(text);
  return text;
}

void XmlDocuments::Element(std::string& text, int depth) {
  static constexpr std::array<std::string_view, 8> names{"a",   "b",        "row", "p:a",
                                                         "p:c", "\xC3\xA9", "A",   "long-name.x"};
  static constexpr std::array<std::string_view, 10> attributes{
      " n='1'",     " m=\"x y\"",   " p:n='2'",        " q='&lt;&#65;&amp;'",   " e=''",
      " xmlns='d'", " xmlns:q='v'", "\n\tr = ' \n z'", " xml:space='preserve'", " n='2'"};
  const std::string name(names[Pick(names.size())]);
  text += "<" + name;
  if (depth == 0) text += " xmlns:p='u'";
  for (std::size_t count = Pick(4); count > 0; --count) {
    const std::string_view attribute = attributes[Pick(attributes.size() - (Pick(6) == 0 ? 0 : 1))];
    if (text.find(attribute, text.rfind('<')) == std::string::npos) text += attribute;
  }
  if (Pick(4) == 0) {
    text += Pick(2) == 0 ? "/>" : " />";
    return;
  }
  text += ">";
  Content(text, depth);
  text += "</" + name + (Pick(8) == 0 ? " >" : ">");
}

void XmlDocuments::Content(std::string& text, int depth) {
  static constexpr std::array<std::string_view, 18> pieces{
      "text",  " ",     "\n  ",       "\r\n",    "\r",           "\t",
      "&amp;", "&#32;", "&#x20AC;",   "&#13;",   "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
      "]",     "x > y", "<!-- c -->", "<?i d?>", "<![CDATA[]]>", "<![CDATA[ <x> ]] \r\n]]>"};
  for (std::size_t count = Pick(7); count > 0; --count) {
    if (Pick(3) == 0 && depth < 6)
      Element(text, depth + 1);
    else
      text += pieces[Pick(pieces.size())];
    if (Pick(40) == 0) text.append(Pick(900), Pick(2) == 0 ? ' ' : 'x');
    if (Pick(60) == 0) text += "<![CDATA[" + std::string(Pick(900), 'y') + "]]>";
  }
}

void XmlDocuments::Spoil(std::string& text) {
  static constexpr std::string_view bytes("<>&'\"/=![]-?: \n\0\x01\x80\xC3\xFFx", 21);
  for (std::size_t count = 1 + Pick(3); count > 0; --count) {
    const std::size_t at = Pick(text.size() + 1);
    switch (Pick(4)) {
      case 0: text.erase(at, 1 + Pick(4)); break;
      case 1: text.insert(at, 1, bytes[Pick(bytes.size())]); break;
      case 2: text.resize(at); break;
      default: text.insert(at, text.substr(Pick(text.size() + 1), 12)); break;
    }
  }
}

}  // namespace rastrel::test
