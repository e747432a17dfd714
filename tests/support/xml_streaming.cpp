#include "tests/support/xml_streaming.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/characters.h"
#include "rastrel/xml/parser.h"
#include "rastrel/xml/parser_internals.h"
#include "rastrel/xml/streamer.h"
#include "rastrel/xml/walk.h"

namespace rastrel::test {
namespace {

// A piece ends with each bracket that may end a tag.
constexpr std::size_t ToTagEnds = SIZE_MAX;

class Pieces : public xml::XmlSource {
 public:
  Pieces(std::string_view bytes, std::size_t most) : m_Bytes(bytes), m_Most(most) {}
  [[nodiscard]] Expected<std::size_t> Read(std::span<char> bytes) override {
    std::size_t most = m_Most == 0 ? bytes.size() : std::min(m_Most, bytes.size());
    if (m_Most == ToTagEnds) most = std::min(m_Bytes.find('>'), bytes.size() - 1) + 1;
    const std::string_view piece = m_Bytes.substr(0, most);
    std::copy(piece.begin(), piece.end(), bytes.begin());
    m_Bytes.remove_prefix(piece.size());
    return piece.size();
  }

 private:
  std::string_view m_Bytes;
  std::size_t m_Most;
};

std::string StartNotes(const xml::XmlTreeNode& node) {
  std::string text(node.name->bytes);
  text += "@" + std::to_string(node.line);
  for (const xml::XmlTreeAttribute& attribute : node.Attributes())
    text += " " + std::string(attribute.name->bytes) + (attribute.declaresNamespace ? ":=" : "=") +
            "[" + std::string(attribute.Value()) + "]";
  return text;
}

std::string NodeNotes(const XmlNode& node, const xml::XmlTreeNode* parent) {
  const xml::XmlTreeNode& tree = *node.Tree();
  std::string text = "(" + std::to_string(static_cast<int>(tree.kind));
  if (tree.parent != parent) text += " of another parent";
  if (!xml::IsElement(node))
    return text + (tree.isWhitespace ? " blank" : "") + " [" + std::string(tree.Content()) + "])";
  text += " " + StartNotes(tree);
  for (XmlNode child = xml::FirstPiece(node); child; child = xml::NextPiece(child))
    text += NodeNotes(child, &tree);
  return text + ")";
}

// Chooses by the name, the depth and how often it was asked, so that the same name gets several
// answers in a document.
class Listener : public xml::XmlStreamHandler {
 public:
  explicit Listener(std::uint32_t choices) : m_Choices(choices) {}

  xml::StreamChoice Begin(std::wstring_view name, const XmlNode& start, int depth) override {
    ++m_Calls;
    m_Notes += "\nbegin " + std::to_string(depth) + " " + StartNotes(*start.Tree());
    if (xml::FirstPiece(start) || xml::NextPiece(start)) m_Notes += " with more";
    if (m_Parents.empty() ? start.Tree()->parent != nullptr : start.Tree()->parent == nullptr)
      m_Notes += " of a wrong parent";
    MayRefuse("begin");
    const auto choice = Choose(name, depth);
    if (choice == xml::StreamChoice::Enter) m_Parents.emplace_back(name);
    return choice;
  }
  void Node(const XmlNode& node) override {
    ++m_Calls;
    m_Notes += "\nnode " + NodeNotes(node, node.Tree()->parent);
    MayRefuse("node");
  }
  void End(std::wstring_view name, int depth) override {
    ++m_Calls;
    m_Notes += "\nend " + std::to_string(depth) + " " + os::Utf8FromWide(name);
    if (m_Parents.empty() || m_Parents.back() != name) m_Notes += " out of turn";
    if (!m_Parents.empty()) m_Parents.pop_back();
    MayRefuse("end");
  }
  [[nodiscard]] const std::string& Notes() const { return m_Notes; }

 private:
  [[nodiscard]] xml::StreamChoice Choose(std::wstring_view name, int depth) const {
    using xml::StreamChoice;
    const std::uint32_t style = m_Choices % 4;
    if (style == 0) return depth < 2 ? StreamChoice::Enter : StreamChoice::Node;
    if (style == 1) return depth < 1 ? StreamChoice::Enter : StreamChoice::Node;
    if (style == 2 && depth < 1) return StreamChoice::Enter;
    const std::uint32_t mixed =
        (m_Calls * 7 + static_cast<std::uint32_t>(name.size()) * 3 + m_Choices) / 4;
    if (mixed % 5 == 0) return StreamChoice::Skip;
    return mixed % 5 < 3 ? StreamChoice::Enter : StreamChoice::Node;
  }
  // One of seven handlers stops somewhere.
  void MayRefuse(const char* where) {
    if (m_Choices % 7 == 3 && m_Calls == 1 + m_Choices % 23)
      Refuse(std::string("refused at ") + where);
  }

  std::uint32_t m_Choices;
  std::uint32_t m_Calls = 0;
  std::string m_Notes;
  std::vector<std::wstring> m_Parents;
};

// Comes after the calls, ahead of why the document was refused.
constexpr std::string_view Refused = "\nrefused";

bool IsRefused(std::string_view text) { return text.rfind(Refused) != text.npos; }

// The place and the message of some faults depend on how much there was in the parser's piece:
// texts, sections and comments that never end, bytes that are no characters, converted documents.
bool DependsOnPieces(std::string_view document, const std::string& parts, Streaming streaming) {
  if (!xml::IsUtf8(document)) return true;
  if (parts.ends_with("Extra content at the end of the document")) return true;
  if (parts.find(" the byte 0x") != parts.npos) return true;
  streaming.takesWhole = false;
  streaming.isUnchecked = false;
  for (const std::size_t piece : {ToTagEnds, std::size_t{1}, std::size_t{7}, std::size_t{64}}) {
    streaming.piece = piece;
    if (CallsOf(document, streaming) != parts) return true;
  }
  return false;
}

std::string DifferenceBetween(const std::string& parts, const std::string& whole,
                              bool isUnchecked) {
  const auto [left, right] = std::ranges::mismatch(parts, whole);
  const auto at = static_cast<std::size_t>(left - parts.begin());
  const std::size_t from = at < 200 ? 0 : at - 200;
  return "in parts ..." + parts.substr(from, 400) + (isUnchecked ? "\nunchecked" : "\nwhole") +
         " ..." + whole.substr(from, 400);
}

}  // namespace

std::string CallsOf(std::string_view document, const Streaming& streaming) {
  std::optional<xml::XmlUncheckedVersion> unchecked;
  if (streaming.isUnchecked) unchecked.emplace();
  Listener listener(streaming.choices);
  Pieces source(document, streaming.piece);
  xml::XmlNames names;
  xml::XmlStreamer streamer(
      listener, names,
      streaming.keepsWhitespace ? xml::XmlWhitespace::Keep : xml::XmlWhitespace::Drop);
  const auto parsed = xml::ParseXml(source, xml::XmlEncoding::ByDocument, names, streamer,
                                    streaming.takesWhole ? &streamer : nullptr);
  if (parsed) return listener.Notes();
  const Failure& failure = parsed.Error();
  return listener.Notes() + std::string(Refused) + " in line " + std::to_string(failure.line) +
         " column " + std::to_string(failure.column) + " " + failure.why;
}

std::string DifferencesInStreaming(std::string_view document, std::size_t piece,
                                   std::uint32_t choices) {
  Streaming streaming{
      .takesWhole = false, .keepsWhitespace = choices % 3 == 0, .piece = 0, .choices = choices};
  const std::string parts = CallsOf(document, streaming);
  streaming.takesWhole = true;
  for (const bool isUnchecked : {false, true}) {
    streaming.isUnchecked = isUnchecked;
    for (const std::size_t most : {std::size_t{0}, piece}) {
      streaming.piece = most;
      const std::string whole = CallsOf(document, streaming);
      if (whole == parts) continue;
      // Where the parser reads all of it in the same pieces, nothing may differ.
      // But the column of a bad byte in a section is known in checked versions alone.
      const bool namesByte = parts.find(" the byte 0x") != parts.npos;
      const bool mayDepend = !isUnchecked || most > 0 || namesByte;
      if (mayDepend && IsRefused(parts) && IsRefused(whole) &&
          DependsOnPieces(document, parts, streaming))
        continue;
      return DifferenceBetween(parts, whole, isUnchecked);
    }
  }
  return {};
}

std::string XmlTables::Next(std::size_t rows) {
  static constexpr std::array<std::size_t, 5> rarities{4, 12, 60, 400, 100000};
  static constexpr std::array<std::string_view, 4> roots{
      "<t", "<t xmlns='d' xmlns:p='u'", "<t xmlns:p='u' xmlns:q='u'",
      "<p:t xmlns:p='u' xmlns:q='v' xmlns:r='w'"};
  m_Rarity = rarities[Pick(rarities.size())];
  const std::size_t root = Pick(roots.size());
  m_Prefix = root > 0 && Pick(2) == 0 ? "p:" : "";
  std::string text;
  if (Pick(2) == 0) text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  text += roots[root];
  text += Pick(3) == 0 ? ">\n" : ">";
  const std::string table = m_Prefix + "data";
  text += "<" + table + ">";
  for (std::size_t count = Pick(rows + 1); count > 0; --count) Row(text);
  text += "</" + table + ">" + (Pick(3) == 0 ? "<tail/>" : "");
  text += root == 3 ? "</p:t>" : "</t>";
  if (Pick(3) == 0) Spoil(text);
  return text;
}

void XmlTables::Row(std::string& text) {
  static constexpr std::array<std::string_view, 12> between{"text",
                                                            "&amp;",
                                                            "<!-- row -->",
                                                            "<?i d?>",
                                                            "\r\n",
                                                            "]]",
                                                            "]",
                                                            "<![CDATA[x]]>",
                                                            "x > y",
                                                            "\xC3\xA9 ",
                                                            "<row>&lt;</row>",
                                                            "<row xmlns:p='z'><p:c/></row>"};
  if (Pick(3) == 0) text += "\n";
  if (Seldom()) text += between[Pick(between.size())];
  text += "<" + m_Prefix + "row r=\"" + std::to_string(Pick(1000)) + "\"";
  if (Pick(4) == 0) text += " spans='1:10' ";
  if (Pick(8) == 0) {
    text += "/>";
    return;
  }
  text += ">";
  for (std::size_t count = Pick(8); count > 0; --count) Cell(text);
  text += "</" + m_Prefix + "row" + (Seldom() ? " >" : ">");
}

void XmlTables::Cell(std::string& text) {
  static constexpr std::array<std::string_view, 22> attributes{" xmlns='e'",
                                                               " xmlns:p='v'",
                                                               " xmlns:s='s'",
                                                               " n=\"&quot;\"",
                                                               " n='a\tb'",
                                                               " n='a\nb'",
                                                               " n = '1'",
                                                               " n=''",
                                                               " p:n='1'",
                                                               " p:n='1' q:n='2'",
                                                               " q:n='1'",
                                                               " xml:space='preserve'",
                                                               " xml:space=\"no\"",
                                                               " xml:lang='de'",
                                                               " n='\xE2\x82\xAC'",
                                                               " n='\xC3'",
                                                               " n='\xEF\xBF\xBE'",
                                                               " n='1' n='2'",
                                                               " x:n='1'",
                                                               " n='>' m=\"it's\"",
                                                               " n='<'",
                                                               " n=1"};
  static constexpr std::array<std::string_view, 24> contents{"&amp;",
                                                             "&#10;",
                                                             "&none;",
                                                             "\r",
                                                             "\r\n",
                                                             "\t",
                                                             "]",
                                                             "]]",
                                                             "]]>",
                                                             "]>",
                                                             "\x01",
                                                             "\x7F",
                                                             "\xC2\x85",
                                                             "\xF0\x9F\x98\x80",
                                                             "\xED\xA0\x80",
                                                             "\xEF\xBF\xBF",
                                                             "\xC0\x80",
                                                             "<!--c-->",
                                                             "<![CDATA[d]]>",
                                                             "<?i?>",
                                                             "<b/>",
                                                             "  \n ",
                                                             "<b\n/>",
                                                             "<\xC3\xA9/>"};
  text += "<c r=\"" + std::string(1, static_cast<char>('A' + Pick(26))) + "\"";
  if (Seldom()) text += attributes[Pick(attributes.size())];
  text += "><" + m_Prefix + "v>";
  text += std::to_string(Pick(100000));
  if (Seldom()) text += contents[Pick(contents.size())];
  if (Seldom()) text.append(Pick(900), ' ');
  text += "</" + m_Prefix + "v></c>";
  if (Seldom()) text += contents[Pick(contents.size())];
}

void XmlTables::Spoil(std::string& text) {
  static constexpr std::string_view bytes("<>&'\"/=![]-?: \n\r\t\0\x01\x80\xC3\xFFx", 23);
  for (std::size_t count = 1 + Pick(2); count > 0; --count) {
    const std::size_t at = Pick(text.size() + 1);
    switch (Pick(5)) {
      case 0: text.erase(at, 1 + Pick(4)); break;
      case 1: text.insert(at, 1, bytes[Pick(bytes.size())]); break;
      case 2: text.resize(at); break;
      case 3:
        if (at < text.size()) text[at] = bytes[Pick(bytes.size())];
        break;
      default: text.insert(at, text.substr(Pick(text.size() + 1), 12)); break;
    }
  }
}

}  // namespace rastrel::test
