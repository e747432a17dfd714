#include "rastrel/xml/parser_events.h"

#include <algorithm>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/declaration.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/parser_internals.h"
#include "rastrel/xml/thread_errors.h"

namespace rastrel::xml {
namespace {

const char* Bytes(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
std::string_view Bytes(const xmlChar* text, int length) {
  return {Bytes(text), static_cast<std::size_t>(length)};
}

// Bytes that are no characters are reported on two lines, the second of which is
//
//     Bytes: 0xE9 0x3C 0x2F 0x61
//
// The first character of them is the bad one. It may be one of UTF-8 and none of XML.
std::string BadByteOf(std::string_view message) {
  constexpr std::string_view mark = "\nBytes:";
  constexpr std::size_t width = 5;  // " 0xE9"
  const std::size_t at = message.find(mark);
  if (at == message.npos) return {};
  std::string bytes;
  for (message.remove_prefix(at + mark.size()); message.size() >= width;
       message.remove_prefix(width)) {
    const auto byte = os::ByteFromHex(message[3], message[4]);
    if (!byte) break;
    bytes += static_cast<char>(*byte);
  }
  if (bytes.empty()) return {};
  const bool isUtf8 = FirstIllFormed(bytes) > 0;
  return BadCharacter(static_cast<unsigned char>(bytes.front()), isUtf8 ? "XML" : "UTF-8");
}

}  // namespace

xmlSAXHandler XmlParserEvents::Handler() {
  xmlSAXHandler handler{};
  handler.initialized = XML_SAX2_MAGIC;
  // Without a function that keeps or looks up entities none is ever known, and none expanded.
  handler.internalSubset = [](void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
    Of(user).Fail("a document type is not accepted");
    Xml().StopParser(Of(user).m_Context.get());
  };
  handler.startDocument = [](void* user) { Of(user).OnDocument(); };
  handler.startElementNs = [](void* user, const xmlChar* local, const xmlChar* prefix,
                              const xmlChar*, int namespaces, const xmlChar** declared,
                              int attributes, int, const xmlChar** values) {
    if (!Of(user).Failed())
      Of(user).OnStart(local, prefix, namespaces, declared, attributes, values);
  };
  handler.endElementNs = [](void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
    if (!Of(user).Failed()) Of(user).OnEnd();
  };
  handler.characters = [](void* user, const xmlChar* text, int length) {
    if (!Of(user).Failed()) Of(user).OnText(Bytes(text, length));
  };
  handler.ignorableWhitespace = handler.characters;
  handler.cdataBlock = [](void* user, const xmlChar* text, int length) {
    if (!Of(user).Failed()) Of(user).OnCdata(Bytes(text, length));
  };
  handler.comment = [](void* user, const xmlChar* text) {
    if (!Of(user).Failed()) Of(user).OnComment(Bytes(text));
  };
  handler.processingInstruction = [](void* user, const xmlChar* target, const xmlChar* data) {
    if (!Of(user).Failed())
      Of(user).OnInstruction(Bytes(target), data == nullptr ? std::string_view() : Bytes(data));
  };
  handler.serror = OnFault;
  return handler;
}

void XmlParserEvents::OnFault(void* user, xmlErrorPtr error) { Of(user).TakeFault(*error); }

bool XmlParserEvents::Begin(std::string_view head) {
  if (m_Encoding == XmlEncoding::ByDocument) m_Family = EncodingFamilyOf(head);
  m_KeepsNames = XmlParserInternals::IsAvailable();
  m_Head = head;
  xmlSAXHandler handler = Handler();
  const XmlThreadErrors errors(this, OnFault);
  m_Context.reset(Xml().CreatePushParserCtxt(&handler, this, head.data(),
                                             static_cast<int>(head.size()), nullptr));
  if (!m_Context) {
    Note(FailureOf("there is no memory for the parser"));
    return false;
  }
  const int encoding = m_Encoding == XmlEncoding::Utf8 ? XML_PARSE_IGNORE_ENC : 0;
  // There are no entities but the five to replace, and without NOENT an ampersand in an attribute
  // would be reported as "&#38;".
  Xml().CtxtUseOptions(m_Context.get(), XML_PARSE_NONET | XML_PARSE_NOENT | encoding);
  return !Failed();
}

// The parser returns the code of its last fault, also of those that it reports to nobody.
bool XmlParserEvents::Push(std::string_view bytes, bool isLast) {
  if (!m_HasBegun) m_Head += bytes;
  const XmlThreadErrors errors(this, OnFault);
  const int fault = Xml().ParseChunk(m_Context.get(), bytes.data(), static_cast<int>(bytes.size()),
                                     isLast ? 1 : 0);
  return fault == XML_ERR_OK || fault == m_PassedFault;
}

void XmlParserEvents::Fail(std::string why) {
  Failure failure = FailureOf(std::move(why));
  if (m_Context) {
    failure.line = Line();
    failure.column = Column();
  }
  Note(std::move(failure));
}

// The first fault counts: later ones often come of it.
void XmlParserEvents::Note(Failure failure) { KeepFirst(m_State, std::move(failure)); }

void XmlParserEvents::FollowEvents() {
  if (const auto state = m_Events.State(); !state) Fail(state.Error().why);
}

void XmlParserEvents::TakeFault(const xmlError& error) {
  if (error.code == XML_WAR_UNKNOWN_VERSION) m_IsOtherVersion = true;
  if (error.level < XML_ERR_ERROR) return;
  // Any text names a namespace, and templates of other programs have names that are no addresses.
  if (error.domain == XML_FROM_NAMESPACE && error.code == XML_WAR_NS_URI) {
    m_PassedFault = error.code;
    return;
  }
  std::string_view message = error.message == nullptr ? "unknown fault" : error.message;
  message = TrimWhitespace(message);
  const std::string bad = BadByteOf(message);
  if (!bad.empty() && m_KeepsNames && XmlParserInternals(*m_Context).IsInCdata())
    return FailInCdata(bad);
  if (!bad.empty()) message = bad;
  // The reason is the first line; others repeat the input.
  message = TrimWhitespace(message.substr(0, message.find_first_of("\r\n")));
  // Its own message is that the document is empty, which one of another kind is not.
  if (error.code == XML_ERR_DOCUMENT_EMPTY)
    message = "no tag stands where the document should begin";
  if (error.domain == XML_FROM_I18N || error.line <= 0) return Fail(std::string(message));
  Note({.why = std::string(message), .line = error.line, .column = error.int2});
}

void XmlParserEvents::OnDocument() {
  m_HasBegun = true;
  const std::string head = std::exchange(m_Head, {});
  if (Failed()) return;
  if (m_IsOtherVersion) return Fail("the document is of another version of XML than 1.0");
  if (m_Encoding == XmlEncoding::Utf8) return;
  const std::string declared = DeclaredEncoding(m_Family, head);
  if (declared.empty()) return;
  if (!IsEncodingName(declared)) return Fail("\"" + declared + "\" is no name of an encoding");
  if (!IsEncodingOf(m_Family, declared)) Fail("the document is in another encoding than it says");
}

void XmlParserEvents::OnStart(const xmlChar* local, const xmlChar* prefix, int namespaces,
                              const xmlChar** declared, int attributes, const xmlChar** values) {
  if (++m_Depth > limits::Depth)
    return Fail("elements are more than " + std::to_string(limits::Depth) + " deep");
  if (static_cast<std::size_t>(namespaces) + static_cast<std::size_t>(attributes) >
      limits::Attributes)
    return Fail("an element has more than " + std::to_string(limits::Attributes) + " attributes");
  m_OuterBindings.push_back(m_Bindings.size());
  if (m_Bindings.size() + static_cast<std::size_t>(namespaces) > limits::Namespaces)
    return Fail("more than " + std::to_string(limits::Namespaces) +
                " namespaces are declared at a time");
  if (m_InCdata) EndCdata();
  m_Attributes.clear();
  if (namespaces > 0) Declarations(namespaces, declared);
  Attributes(attributes, values);
  m_Events.Start(NameOf(prefix, local), m_Attributes,
                 static_cast<std::uint32_t>(std::max(Line(), 0)));
  if (m_Names.Count() > limits::Names)
    return Fail("there are more than " + std::to_string(limits::Names) + " different names");
  if (m_Events.Refused()) FollowEvents();
}

void XmlParserEvents::OnEnd() {
  --m_Depth;
  m_Bindings.resize(m_OuterBindings.back());
  m_OuterBindings.pop_back();
  if (m_InCdata) EndCdata();
  m_Events.End();
  if (m_Events.Refused()) FollowEvents();
}

// Pairs of a prefix, null for the default, and an address.
void XmlParserEvents::Declarations(int count, const xmlChar** declared) {
  for (int index = 0; index < count; ++index) {
    const char* const prefix = Bytes(declared[2 * index]);
    const char* const uri = Bytes(declared[2 * index + 1]);
    m_Bindings.push_back({prefix, uri});
    const XmlName* const name =
        prefix == nullptr ? m_Names.Find(nullptr, "xmlns") : m_Names.Find("xmlns", prefix);
    m_Attributes.push_back({name, uri == nullptr ? std::string_view() : uri, true});
  }
}

// Five pointers each: local name, prefix, namespace, begin and end of the value.
void XmlParserEvents::Attributes(int count, const xmlChar** values) {
  for (int index = 0; index < count; ++index, values += 5) {
    const char* const begin = Bytes(values[3]);
    m_Attributes.push_back({NameOf(values[1], values[0]),
                            {begin, static_cast<std::size_t>(Bytes(values[4]) - begin)},
                            false});
  }
}

// The versions that were checked keep each name in the dictionary of their context for all of its
// life, so that one address is one name.
const XmlName* XmlParserEvents::NameOf(const xmlChar* prefix, const xmlChar* local) {
  return m_KeepsNames ? m_Names.FindKept(Bytes(prefix), Bytes(local))
                      : m_Names.Find(Bytes(prefix), Bytes(local));
}

void XmlParserEvents::OnText(std::string_view text) {
  if (m_InCdata) EndCdata();
  m_Events.Text(text);
}

void XmlParserEvents::OnComment(std::string_view text) {
  if (m_InCdata) EndCdata();
  m_Events.Comment(text);
}

void XmlParserEvents::OnInstruction(const char* target, std::string_view data) {
  if (m_InCdata) EndCdata();
  m_Events.Instruction(m_Names.Find(nullptr, target), data);
}

// The parser hands a long section over in pieces, and does not say where a section begins or ends.
// But its place is the begin of the piece: a piece that begins where the last one ended goes on
// with it, and between two sections there are the end of the one and the mark of the other. The
// parser's columns count bytes in sections.
void XmlParserEvents::OnCdata(std::string_view text) {
  const Place begin{Line(), Column()};
  if (m_InCdata && begin != m_CdataEnd) EndCdata();
  if (Failed()) return;
  if (!m_InCdata) m_CdataBegin = begin;
  m_InCdata = true;
  m_Cdata.append(text);
  if (m_KeepsNames) m_CdataNext = XmlParserInternals(*m_Context).CountBefore() + text.size();
  const std::size_t lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
  const std::size_t last = text.size() - (text.rfind('\n') + 1);
  m_CdataEnd = {begin.line + static_cast<int>(lines),
                static_cast<int>(last) + (lines == 0 ? begin.column : 1)};
}

// The parser goes to the bad byte of a section and leaves its line and column at the begin of a
// piece.
void XmlParserEvents::FailInCdata(const std::string& why) {
  constexpr std::string_view mark = "<![CDATA[";
  const XmlParserInternals parser(*m_Context);
  const Place place{Line(), Column()};
  std::string_view piece = parser.BytesBefore();
  if (m_InCdata && place == m_CdataEnd) {
    const std::uint64_t size = parser.CountBefore() - m_CdataNext;
    if (size <= piece.size()) piece.remove_prefix(piece.size() - size);
    return FailAfter(m_CdataBegin, m_Cdata + std::string(piece), why);
  }
  const std::size_t begin = piece.rfind(mark);
  if (begin == piece.npos) return Note({.why = why, .line = place.line, .column = place.column});
  FailAfter(place, piece.substr(begin + mark.size()), why);
}

// At the end of text that begins at a place.
void XmlParserEvents::FailAfter(const Place& place, std::string_view before,
                                const std::string& why) {
  const auto lines = static_cast<int>(std::ranges::count(before, '\n'));
  const auto characters = static_cast<int>(CharactersIn(before.substr(before.rfind('\n') + 1)));
  Note({.why = why,
        .line = place.line + lines,
        .column = characters + (lines == 0 ? place.column : 1)});
}

// A section is reported with the line ends of the file, which XML wants to be line feeds, and its
// bytes are hardly checked.
void XmlParserEvents::EndCdata() {
  if (!m_InCdata) return;
  m_InCdata = false;
  if (const std::size_t bad = FirstIllFormed(m_Cdata); bad < m_Cdata.size())
    return FailAfter(m_CdataBegin, std::string_view(m_Cdata).substr(0, bad),
                     BadCharacter(static_cast<unsigned char>(m_Cdata[bad]), "UTF-8"));
  std::size_t kept = 0;
  for (std::size_t at = 0; at < m_Cdata.size(); ++at) {
    const bool pair = m_Cdata[at] == '\r' && at + 1 < m_Cdata.size() && m_Cdata[at + 1] == '\n';
    if (!pair) m_Cdata[kept++] = m_Cdata[at] == '\r' ? '\n' : m_Cdata[at];
  }
  m_Cdata.resize(kept);
  m_Events.Cdata(m_Cdata);
  m_Cdata.clear();
}

}  // namespace rastrel::xml
