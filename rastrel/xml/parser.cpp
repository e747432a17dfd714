#include "rastrel/xml/parser.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/characters.h"
#include "rastrel/xml/library.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/plain_scanner.h"

namespace rastrel::xml {
namespace {

// The parser asks for its input in pieces and never has to hold more than one and a tag.
constexpr std::size_t PieceSize = std::size_t{64} << 10;
// What is looked through for whole elements: a row that is longer is told in parts.
constexpr std::size_t WindowSize = 2 * PieceSize;
// What the parser reads at least where there was something that only it can read.
constexpr std::size_t MinimumForParser = 64;
// As many bytes as tell the family of encodings.
constexpr std::size_t HeadSize = 4;
constexpr std::string_view CommentMark = "<!--";
constexpr std::string_view CommentEnd = "-->";

const char* Bytes(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
std::string_view Bytes(const xmlChar* text, int length) {
  return {Bytes(text), static_cast<std::size_t>(length)};
}

// REQUIRES: the parser's library is there, as it is wherever a document is being read.
const XmlLibrary& Xml() { return *XmlLibrary::Instance(); }

struct ContextEnd {
  void operator()(xmlParserCtxt* context) const { Xml().FreeParserCtxt(context); }
};

extern "C" {
void DropMessage(void*, const char*, ...) {}
}

// The library tells some faults through functions of the thread, which belong to the program around
// us: they are ours for the length of a call only.
class ThreadErrors {
 public:
  ThreadErrors(void* user, xmlStructuredErrorFunc handler)
      : m_Structured(*Xml().StructuredError()),
        m_StructuredUser(*Xml().StructuredErrorContext()),
        m_Generic(*Xml().GenericError()),
        m_GenericUser(*Xml().GenericErrorContext()) {
    Xml().SetStructuredErrorFunc(user, handler);
    Xml().SetGenericErrorFunc(nullptr, DropMessage);
  }
  ~ThreadErrors() {
    Xml().SetStructuredErrorFunc(m_StructuredUser, m_Structured);
    Xml().SetGenericErrorFunc(m_GenericUser, m_Generic);
  }
  ThreadErrors(const ThreadErrors&) = delete;
  ThreadErrors& operator=(const ThreadErrors&) = delete;

 private:
  xmlStructuredErrorFunc m_Structured;
  void* m_StructuredUser;
  xmlGenericErrorFunc m_Generic;
  void* m_GenericUser;
};

// A piece that does not end within a comment, where there is a choice; `from` is behind what
// belongs to one that began before. Around the document element the parser takes "<!-->" for a
// comment that has come to its end, and complains that it has none.
std::size_t WithWholeComments(std::string_view bytes, std::size_t from, std::size_t size,
                              bool isFull) {
  size = std::max(from, size);
  for (;;) {
    const std::size_t begin = bytes.substr(0, size).find(CommentMark, from);
    if (begin == bytes.npos) return size;
    const std::size_t close = bytes.find(CommentEnd, begin + CommentMark.size());
    if (close == bytes.npos) return begin > 0 ? begin : isFull ? size : 0;
    from = close + CommentEnd.size();
    size = std::max(from, size);
  }
}

// One reading of one document.
class Parse {
 public:
  Parse(XmlSource& source, XmlEncoding encoding, XmlNames& names, XmlEvents& events,
        XmlElements* elements)
      : m_Source(source),
        m_Encoding(encoding),
        m_Names(names),
        m_Events(events),
        m_Elements(elements) {
    if (elements != nullptr) m_Scanner.emplace(names, *elements);
  }

  Expected<void> Run();

 private:
  static Parse& Of(void* user) { return *static_cast<Parse*>(user); }
  static xmlSAXHandler Handler();

  bool Begin(std::span<char> buffer);
  std::size_t Consume(std::string_view bytes, bool isFull);
  [[nodiscard]] bool IsUnconverted() const;
  [[nodiscard]] bool IsBetweenElements() const;
  bool TakeElements(std::string_view& bytes, bool isFull);
  void Pass(std::string_view bytes, std::uint32_t line);
  void SetScope();
  [[nodiscard]] std::size_t PieceForParser(std::string_view bytes, bool isFull) const;
  void HurryParser();
  void Push(std::string_view piece, bool last);
  void CheckPending();
  void CheckEnd();
  bool Failed() const { return m_Failure.has_value(); }
  void Fail(std::string why);
  void Fail(const xmlError& error);
  void Note(Failure failure);
  void FollowEvents();

  void OnDocument();
  void OnStart(const xmlChar* local, const xmlChar* prefix, int namespaces,
               const xmlChar** declared, int attributes, const xmlChar** values);
  void OnEnd();
  void OnText(std::string_view text);
  void OnComment(std::string_view text);
  void OnInstruction(const char* target, std::string_view data);
  void OnCdata(const xmlChar* text, int length);
  void EndCdata();
  void Declarations(int count, const xmlChar** declared);
  void Attributes(int count, const xmlChar** values);

  XmlSource& m_Source;
  XmlEncoding m_Encoding;
  XmlNames& m_Names;
  XmlEvents& m_Events;
  XmlElements* m_Elements;  // null if all is told in parts
  std::optional<XmlPlainScanner> m_Scanner;
  std::vector<XmlBinding> m_Bindings;
  const XmlName* m_NotPlain = nullptr;  // an element that is the parser's
  std::size_t m_ForParser = 0;          // bytes that it is to read at once, at least
  bool m_BeginsInComment = false;       // the parser has a comment's mark, and nothing else so far
  std::unique_ptr<xmlParserCtxt, ContextEnd> m_Context;
  std::optional<Failure> m_Failure;
  XmlEncodingFamily m_Family = XmlEncodingFamily::Unknown;
  int m_Depth = 0;
  std::vector<XmlStartAttribute> m_Attributes;
  bool m_InCdata = false;
  std::string m_Cdata;
};

xmlSAXHandler Parse::Handler() {
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
    if (!Of(user).Failed()) Of(user).OnCdata(text, length);
  };
  handler.comment = [](void* user, const xmlChar* text) {
    if (!Of(user).Failed()) Of(user).OnComment(Bytes(text));
  };
  handler.processingInstruction = [](void* user, const xmlChar* target, const xmlChar* data) {
    if (!Of(user).Failed())
      Of(user).OnInstruction(Bytes(target), data == nullptr ? std::string_view() : Bytes(data));
  };
  handler.serror = [](void* user, xmlErrorPtr error) { Of(user).Fail(*error); };
  return handler;
}

Expected<void> Parse::Run() {
  const std::size_t size = m_Elements != nullptr ? WindowSize : PieceSize;
  const auto buffer = std::make_unique_for_overwrite<char[]>(size);
  const std::span<char> room(buffer.get(), size);
  if (!Begin(room)) return *m_Failure;
  std::size_t held = 0;
  std::size_t enough = 0;
  while (!Failed()) {
    const auto count = m_Source.Read(room.subspan(held));
    if (!count) {
      Note(FailureOf(Describe(count.Error())));
      break;
    }
    held += *count;
    const bool isLast = *count == 0;
    if (held < enough && !isLast) continue;
    const std::size_t used = Consume({buffer.get(), held}, isLast || held == size);
    held -= used;
    std::memmove(buffer.get(), buffer.get() + used, held);
    // What is left is looked at again from its begin, so not for every few bytes that come.
    enough = std::min(2 * held, size);
    if (!Failed() && isLast) Push({}, true);
    if (isLast) break;
  }
  if (m_Failure) return *std::move(m_Failure);
  return {};
}

// Reads what can be read, all of it if there is no room for more. Whole elements that are plain are
// taken by the scanner. The parser never sees them, which is all the same to it: before and behind
// an element it is in the same state.
std::size_t Parse::Consume(std::string_view bytes, bool isFull) {
  std::string_view rest = bytes;
  while (!Failed() && !rest.empty()) {
    if (IsBetweenElements()) {
      if (!TakeElements(rest, isFull)) break;
    } else if (m_Elements != nullptr) {
      HurryParser();
    }
    if (Failed() || rest.empty()) break;
    const std::string_view piece = rest.substr(0, PieceForParser(rest, isFull));
    if (piece.empty()) break;
    m_BeginsInComment = false;
    Push(piece, false);
    rest.remove_prefix(piece.size());
  }
  return bytes.size() - rest.size();
}

// Whether the bytes are UTF-8, so that the parser reads them as they are.
bool Parse::IsUnconverted() const {
  const xmlParserInput* const input = m_Context->input;
  return input != nullptr && input->buf != nullptr && input->buf->encoder == nullptr;
}

// Whether all that the parser was given is read, and an element may follow.
bool Parse::IsBetweenElements() const {
  return m_Elements != nullptr && m_Elements->Collected() == nullptr && IsUnconverted() &&
         m_Context->instate == XML_PARSER_CONTENT && m_Context->inputNr == 1 &&
         m_Context->input->cur == m_Context->input->end;
}

// Takes elements off the front until there is something for the parser. False if more bytes are
// needed to say what is next.
bool Parse::TakeElements(std::string_view& bytes, bool isFull) {
  if (m_InCdata) EndCdata();
  SetScope();
  const char* const begin = bytes.data();
  auto line = static_cast<std::uint32_t>(m_Context->input->line);
  auto scan = XmlScan::Taken;
  while (!Failed() && scan == XmlScan::Taken && !m_Events.Refused()) {
    scan = m_Scanner->Scan(bytes, m_Depth, line);
    if (scan != XmlScan::Taken && scan != XmlScan::Refused) break;
    const auto size = static_cast<std::size_t>(m_Scanner->End() - bytes.data());
    bytes.remove_prefix(size);
    line = m_Scanner->Line();
    m_ForParser -= std::min(m_ForParser, size);
  }
  Pass({begin, bytes.data()}, line);
  if (m_Events.Refused()) FollowEvents();
  if (scan == XmlScan::Incomplete && !isFull) return false;
  const bool isLong = scan == XmlScan::Incomplete && m_Scanner->IsWanted();
  m_NotPlain = isLong || scan == XmlScan::NotPlain ? m_Scanner->Name() : nullptr;
  // Elements inside each other that are all too long are not each to be looked through.
  if (scan == XmlScan::NotPlain || scan == XmlScan::Incomplete) HurryParser();
  if (scan == XmlScan::Entered) m_ForParser = 0;
  return true;
}

// The parser's place is behind bytes that it has not seen.
void Parse::Pass(std::string_view bytes, std::uint32_t line) {
  xmlParserInput& input = *m_Context->input;
  if (static_cast<int>(line) != input.line) {
    bytes.remove_prefix(bytes.rfind('\n') + 1);
    input.col = 1;
  }
  input.line = static_cast<int>(line);
  input.col += static_cast<int>(m_Scanner->TakeIsAscii() ? bytes.size() : CharactersIn(bytes));
}

// The parser keeps prefixes and addresses as pairs of texts, the innermost last, and each text
// once.
void Parse::SetScope() {
  m_Bindings.clear();
  for (int index = 0; index + 1 < m_Context->nsNr; index += 2)
    m_Bindings.push_back({Bytes(m_Context->nsTab[index]), Bytes(m_Context->nsTab[index + 1])});
  m_Scanner->SetScope(m_Bindings);
}

// Up to the next tag's end, where the scanner may go on; behind the element that it can't take. 0
// if more bytes are needed to say that.
std::size_t Parse::PieceForParser(std::string_view bytes, bool isFull) const {
  if (m_Elements == nullptr || !IsUnconverted()) return bytes.size();
  const XmlName* const element =
      m_Elements->Collected() != nullptr ? m_Elements->Collected() : m_NotPlain;
  std::size_t at = m_ForParser;
  if (element != nullptr && at < bytes.size()) {
    const std::string end = "</" + std::string(element->bytes);
    at = bytes.find(end, at);
  }
  at = at < bytes.size() ? bytes.find('>', at) : bytes.npos;
  const std::size_t size = at == bytes.npos ? bytes.size() : at + 1;
  std::size_t behindComment = 0;
  if (m_BeginsInComment) {
    const std::size_t close = bytes.find(CommentEnd);
    if (close == bytes.npos) return isFull ? bytes.size() : 0;
    behindComment = close + CommentEnd.size();
  }
  return WithWholeComments(bytes, behindComment, size, isFull);
}

// Small pieces cost the parser more than they save where one follows the other.
void Parse::HurryParser() {
  m_ForParser = std::min(std::max(MinimumForParser, m_ForParser * 2), PieceSize);
}

// The parser wants to see the first bytes alone, to choose how it decodes the others.
bool Parse::Begin(std::span<char> buffer) {
  std::size_t held = 0;
  while (held < HeadSize) {
    const auto count = m_Source.Read(buffer.subspan(held, HeadSize - held));
    if (!count) {
      Note(FailureOf(Describe(count.Error())));
      return false;
    }
    if (*count == 0) break;
    held += *count;
  }
  if (held == 0) {
    Note({.why = "the document is empty", .line = 1, .column = 1});
    return false;
  }
  if (!XmlLibrary::Instance()) {
    Note(FailureOf(Describe(XmlLibrary::Instance().Error())));
    return false;
  }
  m_BeginsInComment = std::string_view(buffer.data(), held) == CommentMark;
  xmlSAXHandler handler = Handler();
  if (m_Encoding == XmlEncoding::ByDocument) m_Family = EncodingFamilyOf({buffer.data(), held});
  const ThreadErrors errors(this, handler.serror);
  m_Context.reset(
      Xml().CreatePushParserCtxt(&handler, this, buffer.data(), static_cast<int>(held), nullptr));
  if (!m_Context) {
    Note(FailureOf("there is no memory for the parser"));
    return false;
  }
  const int encoding = m_Encoding == XmlEncoding::Utf8 ? XML_PARSE_IGNORE_ENC : 0;
  // There are no entities but the five to replace, and without NOENT an ampersand in an attribute
  // would be told as "&#38;".
  Xml().CtxtUseOptions(m_Context.get(), XML_PARSE_NONET | XML_PARSE_NOENT | encoding);
  return !Failed();
}

void Parse::Push(std::string_view piece, bool last) {
  const ThreadErrors errors(this, m_Context->sax->serror);
  Xml().ParseChunk(m_Context.get(), piece.data(), static_cast<int>(piece.size()), last ? 1 : 0);
  if (!Failed()) CheckPending();
  if (!Failed()) FollowEvents();
  if (!Failed() && last) CheckEnd();
}

// What the parser could not use yet is the begin of something long. The time that it takes for a
// tag grows with the square of the attributes, and it says how many there are only afterwards.
void Parse::CheckPending() {
  if (m_Context->input == nullptr) return;
  const auto* const begin = Bytes(m_Context->input->cur);
  const auto* const end = Bytes(m_Context->input->end);
  if (end - begin < static_cast<std::ptrdiff_t>(PieceSize)) return;
  std::string_view pending(begin, static_cast<std::size_t>(end - begin));
  if (pending.size() > limits::MarkupBytes)
    return Fail("a tag, comment, instruction or CDATA section has more than " +
                std::to_string(limits::MarkupBytes) + " bytes");
  if (pending[0] != '<' || pending[1] == '!' || pending[1] == '?') return;
  std::size_t values = 0;
  for (;;) {
    const std::size_t quote = pending.find_first_of("\"'");
    if (quote == std::string_view::npos) break;
    ++values;
    const std::size_t close = pending.find(pending[quote], quote + 1);
    if (close == std::string_view::npos) break;
    pending.remove_prefix(close + 1);
  }
  if (values > limits::Attributes)
    Fail("an element has more than " + std::to_string(limits::Attributes) + " attributes");
}

// Faults that the parser lets pass.
void Parse::CheckEnd() {
  if (m_Context->wellFormed == 0) return Fail("the document is not well-formed");
  const xmlParserInput* const input = m_Context->input;
  const bool cut = input != nullptr && input->buf != nullptr && input->buf->raw != nullptr &&
                   Xml().BufUse(input->buf->raw) > 0;
  if (cut) Fail("the document ends within a character");
}

void Parse::Fail(std::string why) {
  Failure failure = FailureOf(std::move(why));
  if (m_Context && m_Context->input != nullptr) {
    failure.line = m_Context->input->line;
    failure.column = m_Context->input->col;
  }
  Note(std::move(failure));
}

void Parse::Fail(const xmlError& error) {
  if (error.level < XML_ERR_ERROR) return;
  // Any text names a namespace, and templates of other programs have names that are no addresses.
  if (error.domain == XML_FROM_NAMESPACE && error.code == XML_WAR_NS_URI) return;
  std::string_view message = error.message == nullptr ? "unknown fault" : error.message;
  message = TrimBlanks(message);
  // Its own words are that the document is empty, which one of another kind is not.
  if (error.code == XML_ERR_DOCUMENT_EMPTY)
    message = "no tag stands where the document should begin";
  if (error.domain == XML_FROM_I18N || error.line <= 0) return Fail(std::string(message));
  Note({.why = std::string(message), .line = error.line, .column = error.int2});
}

// The first fault counts: what follows it often comes of it.
void Parse::Note(Failure failure) {
  if (!m_Failure) m_Failure = std::move(failure);
  if (m_Context) m_Context->disableSAX = 1;
}

void Parse::FollowEvents() {
  if (auto refusal = m_Events.Refusal()) Fail(os::Utf8FromWide(*refusal));
}

void Parse::OnDocument() {
  if (Failed()) return;
  const char* const version = Bytes(m_Context->version);
  if (version != nullptr && std::strcmp(version, "1.0") != 0)
    return Fail("the document is of another version of XML than 1.0");
  const xmlChar* declared = m_Context->encoding;
  if (declared == nullptr && m_Context->input != nullptr) declared = m_Context->input->encoding;
  if (declared == nullptr) return;
  if (!IsEncodingName(Bytes(declared)))
    return Fail("\"" + std::string(Bytes(declared)) + "\" is no name of an encoding");
  if (!IsEncodingOf(m_Family, Bytes(declared)))
    Fail("the document is in another encoding than it says");
}

void Parse::OnStart(const xmlChar* local, const xmlChar* prefix, int namespaces,
                    const xmlChar** declared, int attributes, const xmlChar** values) {
  if (++m_Depth > limits::Depth)
    return Fail("elements are more than " + std::to_string(limits::Depth) + " deep");
  if (static_cast<std::size_t>(namespaces) + static_cast<std::size_t>(attributes) >
      limits::Attributes)
    return Fail("an element has more than " + std::to_string(limits::Attributes) + " attributes");
  if (static_cast<std::size_t>(m_Context->nsNr / 2) > limits::Namespaces)
    return Fail("more than " + std::to_string(limits::Namespaces) +
                " namespaces are declared at a time");
  if (m_InCdata) EndCdata();
  m_Attributes.clear();
  if (namespaces > 0) Declarations(namespaces, declared);
  Attributes(attributes, values);
  m_Events.Start(m_Names.FindKept(Bytes(prefix), Bytes(local)), m_Attributes,
                 static_cast<std::uint32_t>(std::max(m_Context->input->line, 0)));
  if (m_Names.Count() > limits::Names)
    return Fail("there are more than " + std::to_string(limits::Names) + " different names");
  if (m_Events.Refused()) FollowEvents();
}

void Parse::OnEnd() {
  --m_Depth;
  if (m_InCdata) EndCdata();
  m_Events.End();
  if (m_Events.Refused()) FollowEvents();
}

void Parse::Declarations(int count, const xmlChar** declared) {
  for (int index = 0; index < count; ++index) {
    const char* const prefix = Bytes(declared[2 * index]);
    const char* const uri = Bytes(declared[2 * index + 1]);
    const XmlName* const name =
        prefix == nullptr ? m_Names.Find(nullptr, "xmlns") : m_Names.Find("xmlns", prefix);
    m_Attributes.push_back({name, uri == nullptr ? std::string_view() : uri, true});
  }
}

// Five pointers each: local name, prefix, namespace, begin and end of the value. The names lie in
// the context's dictionary, which keeps each text once.
void Parse::Attributes(int count, const xmlChar** values) {
  for (int index = 0; index < count; ++index, values += 5) {
    const char* const begin = Bytes(values[3]);
    m_Attributes.push_back({m_Names.FindKept(Bytes(values[1]), Bytes(values[0])),
                            {begin, static_cast<std::size_t>(Bytes(values[4]) - begin)},
                            false});
  }
}

void Parse::OnText(std::string_view text) {
  if (m_InCdata) EndCdata();
  m_Events.Text(text);
}

void Parse::OnComment(std::string_view text) {
  if (m_InCdata) EndCdata();
  m_Events.Comment(text);
}

void Parse::OnInstruction(const char* target, std::string_view data) {
  if (m_InCdata) EndCdata();
  m_Events.Instruction(m_Names.Find(nullptr, target), data);
}

// The parser hands a long section over in pieces, and does not say where one begins or ends. But a
// piece stands in the input as it is told: behind the section's mark if it is the first.
void Parse::OnCdata(const xmlChar* text, int length) {
  constexpr std::string_view mark = "<![CDATA[";
  const xmlParserInput& input = *m_Context->input;
  const bool inside = text >= input.base && text <= input.end;
  const auto before = inside ? text - input.base : 0;
  const bool first = before < static_cast<std::ptrdiff_t>(mark.size()) ||
                     Bytes(text - mark.size(), static_cast<int>(mark.size())) == mark;
  if (m_InCdata && first) EndCdata();
  m_InCdata = true;
  m_Cdata.append(Bytes(text, length));
}

// A section is told with the line ends of the file, which XML wants to be line feeds, and hardly
// looked at.
void Parse::EndCdata() {
  m_InCdata = false;
  if (!IsUtf8(m_Cdata)) return Fail("a CDATA section holds bytes that are no characters");
  std::size_t kept = 0;
  for (std::size_t at = 0; at < m_Cdata.size(); ++at) {
    const bool pair = m_Cdata[at] == '\r' && at + 1 < m_Cdata.size() && m_Cdata[at + 1] == '\n';
    if (!pair) m_Cdata[kept++] = m_Cdata[at] == '\r' ? '\n' : m_Cdata[at];
  }
  m_Cdata.resize(kept);
  m_Events.Cdata(m_Cdata);
  m_Cdata.clear();
}

}  // namespace

Expected<void> ParseXml(XmlSource& source, XmlEncoding encoding, XmlNames& names, XmlEvents& events,
                        XmlElements* elements) {
  return Parse(source, encoding, names, events, elements).Run();
}

}  // namespace rastrel::xml
