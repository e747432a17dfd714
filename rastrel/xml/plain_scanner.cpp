#include "rastrel/xml/plain_scanner.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "rastrel/xml/characters.h"
#include "rastrel/xml/limits.h"

namespace rastrel::xml {
namespace {

// Classes of bytes. Those beyond ASCII are checked together, where they end.
enum Class : std::uint8_t {
  NameStart = 1,  // begins a name
  NameByte = 2,   // goes on with it; the colon among them
  StopsText = 4,  // needs a closer look in a text
  NotInValue = 8,
  BeyondAscii = 16,
};

constexpr std::array<std::uint8_t, 256> MakeClasses() {
  std::array<std::uint8_t, 256> classes{};
  for (unsigned byte = 0; byte < classes.size(); ++byte) {
    const bool letter = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
    const bool more = letter || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
    unsigned what = 0;
    if (letter) what |= NameStart;
    if (more || byte == ':') what |= NameByte;
    if (byte < 0x20 || byte == '<' || byte == '&') what |= NotInValue;
    if ((byte < 0x20 && byte != '\t') || byte == '<' || byte == '&' || byte == ']' || byte >= 0x80)
      what |= StopsText;
    if (byte >= 0x80) what |= BeyondAscii;
    classes[byte] = static_cast<std::uint8_t>(what);
  }
  return classes;
}
constexpr std::array<std::uint8_t, 256> Classes = MakeClasses();

unsigned ClassOf(char byte) { return Classes[static_cast<unsigned char>(byte)]; }

// Two pieces of a known size that overlap reach over all of a few bytes.
template <typename Piece>
bool SameEnds(const char* left, const char* right, std::size_t count) {
  const auto at = [](const char* bytes) {
    Piece piece;
    std::memcpy(&piece, bytes, sizeof(piece));
    return piece;
  };
  const std::size_t last = count - sizeof(Piece);
  return at(left) == at(right) && at(left + last) == at(right + last);
}

// Names are short, and a call would cost more than comparing them.
bool SameBytes(const char* left, const char* right, std::size_t count) {
  if (count > 16) return std::memcmp(left, right, count) == 0;
  if (count >= 8) return SameEnds<std::uint64_t>(left, right, count);
  if (count >= 4) return SameEnds<std::uint32_t>(left, right, count);
  if (count >= 2) return SameEnds<std::uint16_t>(left, right, count);
  return count == 0 || *left == *right;
}

std::string_view Between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

void XmlPlainScanner::SetScope(std::span<const XmlBinding> bindings) {
  if (std::ranges::equal(bindings, m_Bindings)) return;
  m_Bindings.assign(bindings.begin(), bindings.end());
  m_Known = {};
  m_HasSynonyms = false;
  for (std::size_t left = 0; left < m_Bindings.size(); ++left)
    for (std::size_t right = 0; right < left; ++right)
      if (m_Bindings[left].uri == m_Bindings[right].uri) m_HasSynonyms = true;
}

bool XmlPlainScanner::IsInScope(std::string_view prefix) const {
  return std::ranges::any_of(m_Bindings, [prefix](const XmlBinding& binding) {
    return binding.prefix != nullptr && binding.prefix == prefix;
  });
}

XmlScan XmlPlainScanner::Scan(std::string_view bytes, int depth, std::uint32_t line) {
  m_At = bytes.data();
  m_End = bytes.data() + bytes.size();
  m_Line = line;
  m_Depth = depth;
  m_Name = nullptr;
  m_Builds = false;
  m_Open.clear();
  m_Arena.GoBack({});

  SkipWhitespace();
  if (m_At == m_End) return XmlScan::Incomplete;
  if (*m_At++ != '<') return XmlScan::NotPlain;
  const auto failure = [](Step step) {
    return step == Step::Incomplete ? XmlScan::Incomplete : XmlScan::NotPlain;
  };
  bool isEmpty = false;
  if (const Step step = ReadStart(m_Name, isEmpty); step != Step::Done) return failure(step);
  XmlTreeNode* const element = MakeElement(m_Name);
  const auto choice = m_Elements.Choose(*element);
  if (!choice) {
    m_At = m_TagEnd;
    return XmlScan::Refused;
  }
  if (*choice == StreamChoice::Enter) return XmlScan::Entered;
  m_Builds = *choice == StreamChoice::Node;
  if (!isEmpty) {
    m_Open.push_back({m_Name, {element, nullptr}});
    if (const Step step = ReadContent(); step != Step::Done) return failure(step);
  }
  m_Elements.Take(*element);
  return XmlScan::Taken;
}

// Up to the end of the element that is open.
XmlPlainScanner::Step XmlPlainScanner::ReadContent() {
  while (!m_Open.empty()) {
    std::string_view text;
    if (const Step step = ReadText(text); step != Step::Done) return step;
    if (m_Builds && !text.empty()) AddText(text);
    ++m_At;
    if (m_At == m_End) return Step::Incomplete;
    const Step step = *m_At == '/' ? ReadEnd(*m_Open.back().name) : ReadChild();
    if (step != Step::Done) return step;
  }
  return Step::Done;
}

XmlPlainScanner::Step XmlPlainScanner::ReadChild() {
  if (m_Depth + static_cast<int>(m_Open.size()) >= limits::Depth) return Step::NotPlain;
  const XmlName* name = nullptr;
  bool isEmpty = false;
  if (const Step step = ReadStart(name, isEmpty); step != Step::Done) return step;
  XmlTreeNode* element = nullptr;
  if (m_Builds) {
    element = MakeElement(name);
    m_Open.back().node.Append(element);
  }
  if (!isEmpty) m_Open.push_back({name, {element, nullptr}});
  return Step::Done;
}

// REQUIRES: the place is the slash of an end tag.
XmlPlainScanner::Step XmlPlainScanner::ReadEnd(const XmlName& name) {
  ++m_At;
  const std::size_t length = name.bytes.size();
  if (static_cast<std::size_t>(m_End - m_At) <= length) return Step::Incomplete;
  if (!SameBytes(m_At, name.bytes.data(), length)) return Step::NotPlain;
  m_At += length;
  SkipWhitespace();
  if (m_At == m_End) return Step::Incomplete;
  if (*m_At != '>') return Step::NotPlain;
  ++m_At;
  m_Open.pop_back();
  return Step::Done;
}

// Up to the next tag.
XmlPlainScanner::Step XmlPlainScanner::ReadText(std::string_view& text) {
  const char* const begin = m_At;
  const char* at = begin;
  bool isAscii = true;
  for (;; ++at) {
    while (at != m_End && (ClassOf(*at) & StopsText) == 0) ++at;
    if (at == m_End) return Step::Incomplete;
    if (*at == '<') break;
    if (*at == '\n') {
      ++m_Line;
    } else if (*at == ']') {
      if (m_End - at < 3) return Step::Incomplete;
      if (at[1] == ']' && at[2] == '>') return Step::NotPlain;
    } else if ((ClassOf(*at) & BeyondAscii) != 0) {
      isAscii = m_IsAscii = false;
    } else {
      return Step::NotPlain;
    }
  }
  m_At = at;
  text = Between(begin, at);
  return isAscii || AreXmlCharacters(text) ? Step::Done : Step::NotPlain;
}

// A start tag from its name on.
XmlPlainScanner::Step XmlPlainScanner::ReadStart(const XmlName*& name, bool& isEmpty) {
  Known known;
  if (const Step step = ReadName(known); step != Step::Done) return step;
  if (known.isSpace) return Step::NotPlain;
  name = known.name;
  return ReadAttributes(isEmpty);
}

XmlPlainScanner::Step XmlPlainScanner::ReadAttributes(bool& isEmpty) {
  m_AttributeCount = 0;
  for (;;) {
    const bool hasWhitespace = SkipWhitespace();
    if (m_At == m_End) return Step::Incomplete;
    m_TagEnd = m_At;
    if (*m_At == '>') {
      ++m_At;
      isEmpty = false;
      return Step::Done;
    }
    if (*m_At == '/') {
      if (m_End - m_At < 2) return Step::Incomplete;
      if (m_At[1] != '>') return Step::NotPlain;
      m_At += 2;
      isEmpty = true;
      return Step::Done;
    }
    if (!hasWhitespace || m_AttributeCount == MaximumAttributes) return Step::NotPlain;
    if (const Step step = ReadAttribute(); step != Step::Done) return step;
  }
}

XmlPlainScanner::Step XmlPlainScanner::ReadAttribute() {
  Known known;
  if (const Step step = ReadName(known); step != Step::Done) return step;
  if (*m_At++ != '=' || Repeats(*known.name)) return Step::NotPlain;
  std::string_view value;
  if (const Step step = ReadValue(value); step != Step::Done) return step;
  if (known.isSpace && value != "preserve" && value != "default") return Step::NotPlain;
  m_Attributes[m_AttributeCount++] = {known.name, value.data(),
                                      static_cast<std::uint32_t>(value.size()), false};
  return Step::Done;
}

// Two attributes of an element must not have the same name, nor the same local part after prefixes
// of the same namespace.
bool XmlPlainScanner::Repeats(const XmlName& name) const {
  for (std::size_t index = 0; index < m_AttributeCount; ++index) {
    const XmlName& other = *m_Attributes[index].name;
    if (&other == &name) return true;
    if (m_HasSynonyms && other.prefix > 0 && name.prefix > 0 && other.local == name.local)
      return true;
  }
  return false;
}

XmlPlainScanner::Step XmlPlainScanner::ReadValue(std::string_view& value) {
  if (m_At == m_End) return Step::Incomplete;
  const char quote = *m_At;
  if (quote != '"' && quote != '\'') return Step::NotPlain;
  const char* const begin = ++m_At;
  unsigned seen = 0;
  for (; m_At != m_End && *m_At != quote; ++m_At) seen |= ClassOf(*m_At);
  if (m_At == m_End) return Step::Incomplete;
  value = Between(begin, m_At++);
  if ((seen & NotInValue) != 0) return Step::NotPlain;
  if ((seen & BeyondAscii) == 0) return Step::Done;
  m_IsAscii = false;
  return AreXmlCharacters(value) ? Step::Done : Step::NotPlain;
}

// A name and whatever ends it, which is still to be read.
XmlPlainScanner::Step XmlPlainScanner::ReadName(Known& name) {
  const char* const begin = m_At;
  while (m_At != m_End && (ClassOf(*m_At) & NameByte) != 0) ++m_At;
  if (m_At == m_End) return Step::Incomplete;
  const std::string_view bytes = Between(begin, m_At);
  if (bytes.empty()) return Step::NotPlain;
  const std::size_t mixed = static_cast<unsigned char>(bytes.front()) * std::size_t{7} +
                            static_cast<unsigned char>(bytes.back()) * std::size_t{31} +
                            bytes.size() * 13;
  Known& known = m_Known[mixed % KnownCount];
  if (known.name == nullptr || known.name->bytes.size() != bytes.size() ||
      !SameBytes(known.name->bytes.data(), bytes.data(), bytes.size())) {
    const Known learned = Learn(bytes);
    if (learned.name == nullptr) return Step::NotPlain;
    known = learned;
  }
  name = known;
  return Step::Done;
}

// Nothing if it is no name, or none that may be used here, or one of those that mean something to
// the parser.
XmlPlainScanner::Known XmlPlainScanner::Learn(std::string_view bytes) const {
  const std::size_t colon = bytes.find(':');
  const std::string_view prefix = colon == bytes.npos ? std::string_view() : bytes.substr(0, colon);
  const std::string_view local = bytes.substr(colon == bytes.npos ? 0 : colon + 1);
  const auto isName = [](std::string_view part) {
    return !part.empty() && (ClassOf(part.front()) & NameStart) != 0 && part.find(':') == part.npos;
  };
  if (!isName(local) || m_Names.Count() >= limits::Names) return {};
  if (colon == bytes.npos)
    return local == "xmlns" ? Known{} : Known{m_Names.Find("", std::string(local).c_str())};
  const bool isSpace = bytes == "xml:space";
  const bool isReserved = prefix == "xml" || prefix == "xmlns";
  if (!isName(prefix) || (!isSpace && (isReserved || !IsInScope(prefix)))) return {};
  return {m_Names.Find(std::string(prefix).c_str(), std::string(local).c_str()), isSpace};
}

// Returns whether there was any.
bool XmlPlainScanner::SkipWhitespace() {
  const char* const begin = m_At;
  for (; m_At != m_End; ++m_At) {
    if (*m_At == '\n')
      ++m_Line;
    else if (*m_At != ' ' && *m_At != '\t')
      break;
  }
  return m_At != begin;
}

XmlTreeNode* XmlPlainScanner::MakeElement(const XmlName* name) {
  const std::size_t size = sizeof(XmlTreeNode) + m_AttributeCount * sizeof(XmlTreeAttribute);
  XmlTreeNode* const node = MakeElementAt(m_Arena.Allocate(size), name, m_AttributeCount, m_Line,
                                          m_Open.empty() ? nullptr : m_Open.back().node.element);
  auto* slot = reinterpret_cast<XmlTreeAttribute*>(node + 1);
  for (std::size_t index = 0; index < m_AttributeCount; ++index)
    new (slot++) XmlTreeAttribute(m_Attributes[index]);
  return node;
}

void XmlPlainScanner::AddText(std::string_view text) {
  const bool isWhitespace =
      IsXmlWhitespace(text.front()) && std::ranges::all_of(text, IsXmlWhitespace);
  if (isWhitespace && !m_KeepsWhitespace) return;
  XmlTreeLevel& parent = m_Open.back().node;
  parent.Append(MakeContentAt(m_Arena.Allocate(sizeof(XmlTreeNode)), XmlKind::Text, nullptr, text,
                              isWhitespace, parent.element));
}

}  // namespace rastrel::xml
