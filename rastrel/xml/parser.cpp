#include "rastrel/xml/parser.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "rastrel/platform/os/character_check.h"
#include "rastrel/xml/characters.h"
#include "rastrel/xml/declaration.h"
#include "rastrel/xml/input_watch.h"
#include "rastrel/xml/library.h"
#include "rastrel/xml/limits.h"
#include "rastrel/xml/parser_events.h"
#include "rastrel/xml/parser_internals.h"
#include "rastrel/xml/plain_scanner.h"

namespace rastrel::xml {
namespace {

// The parser is given its input in pieces and never has to hold more than one and a tag.
constexpr std::size_t PieceSize = std::size_t{64} << 10;
// The bytes that are searched for whole elements: a longer row is reported in parts.
constexpr std::size_t WindowSize = 2 * PieceSize;
// The minimum for the parser after something that only it can read.
constexpr std::size_t MinimumForParser = 64;
// The number of bytes that show the family of encodings.
constexpr std::size_t HeadSize = 4;
// The first four bytes of a declaration, and the maximum of it that is looked at.
constexpr std::string_view DeclarationMark = "<?xm";
constexpr std::size_t MaximumDeclaration = 1024;
constexpr std::string_view CommentMark = "<!--";
constexpr std::string_view CommentEnd = "-->";

// Returns the size of a piece that does not end within a comment, where there is a choice. `from`
// is the end of a comment that began before. Around the document element the parser takes "<!-->"
// for a comment that has come to its end, and complains that it has none.
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

std::size_t QuotedValues(std::string_view tag) {
  std::size_t values = 0;
  for (;;) {
    const std::size_t quote = tag.find_first_of("\"'");
    if (quote == tag.npos) return values;
    ++values;
    const std::size_t close = tag.find(tag[quote], quote + 1);
    if (close == tag.npos) return values;
    tag.remove_prefix(close + 1);
  }
}

// One reading of one document: takes its bytes from the source, and passes them to the scanner or
// to the parser.
class Feeder {
 public:
  Feeder(XmlSource& source, XmlEncoding encoding, XmlNames& names, XmlEvents& events,
         XmlElements* elements)
      : m_Source(source),
        m_Events(events),
        m_Elements(elements),
        m_Parser(encoding, names, events) {
    if (elements != nullptr) m_Scanner.emplace(names, *elements);
  }

  Expected<void> Run();

 private:
  bool Begin(std::span<char> buffer);
  void ReadAll(std::span<char> room);
  std::size_t Consume(std::string_view bytes, bool isFull);
  [[nodiscard]] bool IsBetweenElements() const;
  bool TakeElements(std::string_view& bytes, bool isFull);
  void MovePlace(std::string_view bytes, std::uint32_t line);
  [[nodiscard]] std::size_t PieceForParser(std::string_view bytes, bool isFull) const;
  void HurryParser();
  bool FindEncoding(std::string_view bytes, bool isFull);
  void PushChecked(std::string_view piece);
  void Push(std::string_view piece, bool isLast);
  void CheckHeldBack();
  [[nodiscard]] bool EndsWithinCharacter() const;
  [[nodiscard]] bool Failed() const { return m_Parser.Failed(); }

  XmlSource& m_Source;
  XmlEvents& m_Events;
  XmlElements* m_Elements;  // null if all is reported in parts
  std::optional<XmlPlainScanner> m_Scanner;
  XmlParserEvents m_Parser;
  std::optional<XmlParserInternals> m_Internals;  // either this
  std::optional<XmlInputWatch> m_Watch;           // or this, from the first bytes on
  const XmlName* m_NotPlain = nullptr;            // an element that is the parser's
  std::size_t m_ForParser = 0;                    // bytes that it is to read at once, at least
  std::string m_Head;                             // the first bytes, until the encoding is known
  std::string m_Encoding;                         // the declared one, if characters are checked
  std::unique_ptr<os::CharacterCheck> m_Characters;
  bool m_BeginsInComment = false;  // the parser has a comment's mark, and nothing else so far
};

Expected<void> Feeder::Run() {
  const std::size_t size = m_Elements != nullptr ? WindowSize : PieceSize;
  const auto buffer = std::make_unique_for_overwrite<char[]>(size);
  const std::span<char> room(buffer.get(), size);
  if (Begin(room)) ReadAll(room);
  return m_Parser.State();
}

void Feeder::ReadAll(std::span<char> room) {
  char* const buffer = room.data();
  std::size_t held = 0;
  std::size_t enough = 0;
  while (!Failed()) {
    const auto count = m_Source.Read(room.subspan(held));
    if (!count) return m_Parser.Note(FailureOf(Describe(count.Error())));
    held += *count;
    const bool isLast = *count == 0;
    if (held < enough && !isLast) continue;
    const std::size_t used = Consume({buffer, held}, isLast || held == room.size());
    held -= used;
    std::memmove(buffer, buffer + used, held);
    // The bytes left are searched again from their begin, so not for every few that arrive.
    enough = std::min(2 * held, room.size());
    if (!Failed() && isLast) Push({}, true);
    if (isLast) return;
  }
}

// The parser wants to see the first bytes alone, to choose how it decodes the others.
bool Feeder::Begin(std::span<char> buffer) {
  std::size_t held = 0;
  while (held < HeadSize) {
    const auto count = m_Source.Read(buffer.subspan(held, HeadSize - held));
    if (!count) {
      m_Parser.Note(FailureOf(Describe(count.Error())));
      return false;
    }
    if (*count == 0) break;
    held += *count;
  }
  if (held == 0) {
    m_Parser.Note({.why = "the document is empty", .line = 1, .column = 1});
    return false;
  }
  if (!XmlLibrary::Instance()) {
    m_Parser.Note(FailureOf(Describe(XmlLibrary::Instance().Error())));
    return false;
  }
  const std::string_view head(buffer.data(), held);
  m_BeginsInComment = head == CommentMark;
  m_Head = head;
  if (!m_Parser.Begin(head)) return false;
  if (XmlParserInternals::IsAvailable()) {
    m_Internals.emplace(m_Parser.Context());
  } else {
    m_Watch.emplace(m_Parser.Family(), IsBigEndian(head)).Read(head);
    m_Elements = nullptr;
  }
  return true;
}

// Reads as much as possible, and all of it if there is no room for more. Whole elements that are
// plain are taken by the scanner. The parser never sees them, and need not: before and after an
// element it is in the same state.
std::size_t Feeder::Consume(std::string_view bytes, bool isFull) {
  if (!m_Head.empty() && !FindEncoding(bytes, isFull)) return 0;
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
    PushChecked(piece);
    rest.remove_prefix(piece.size());
  }
  return bytes.size() - rest.size();
}

bool Feeder::IsBetweenElements() const {
  return m_Elements != nullptr && m_Elements->Collected() == nullptr &&
         m_Internals->IsBetweenElements();
}

// Takes elements off the front until there is something for the parser. False if more bytes are
// needed to decide.
bool Feeder::TakeElements(std::string_view& bytes, bool isFull) {
  m_Parser.EndCdata();
  m_Scanner->SetScope(m_Parser.Bindings());
  const char* const begin = bytes.data();
  auto line = static_cast<std::uint32_t>(m_Parser.Line());
  auto scan = XmlScan::Taken;
  while (!Failed() && scan == XmlScan::Taken && !m_Events.Refused()) {
    scan = m_Scanner->Scan(bytes, m_Parser.Depth(), line);
    if (scan != XmlScan::Taken && scan != XmlScan::Refused) break;
    const auto size = static_cast<std::size_t>(m_Scanner->End() - bytes.data());
    bytes.remove_prefix(size);
    line = m_Scanner->Line();
    m_ForParser -= std::min(m_ForParser, size);
  }
  MovePlace({begin, bytes.data()}, line);
  if (m_Events.Refused()) m_Parser.FollowEvents();
  if (scan == XmlScan::Incomplete && !isFull) return false;
  const bool isLong = scan == XmlScan::Incomplete && m_Scanner->IsWanted();
  m_NotPlain = isLong || scan == XmlScan::NotPlain ? m_Scanner->Name() : nullptr;
  // Elements inside each other that are all too long are not each to be looked through.
  if (scan == XmlScan::NotPlain || scan == XmlScan::Incomplete) HurryParser();
  if (scan == XmlScan::Entered) m_ForParser = 0;
  return true;
}

// Moves the parser's place on over bytes that it never gets, to the line on which they end.
void Feeder::MovePlace(std::string_view bytes, std::uint32_t line) {
  int column = m_Parser.Column();
  if (static_cast<int>(line) != m_Parser.Line()) {
    bytes.remove_prefix(bytes.rfind('\n') + 1);
    column = 1;
  }
  column += static_cast<int>(m_Scanner->TakeIsAscii() ? bytes.size() : CharactersIn(bytes));
  m_Internals->SetPlace(static_cast<int>(line), column);
}

// The bytes up to the next end of a tag after which the scanner may go on, beyond an element that
// it can't take. 0 if more bytes are needed to decide.
std::size_t Feeder::PieceForParser(std::string_view bytes, bool isFull) const {
  if (m_Elements == nullptr || !m_Internals->IsUnconverted()) return bytes.size();
  const XmlName* const element =
      m_Elements->Collected() != nullptr ? m_Elements->Collected() : m_NotPlain;
  std::size_t at = m_ForParser;
  if (element != nullptr && at < bytes.size()) {
    const std::string end = "</" + std::string(element->bytes);
    at = bytes.find(end, at);
  }
  at = at < bytes.size() ? bytes.find('>', at) : bytes.npos;
  const std::size_t size = at == bytes.npos ? bytes.size() : at + 1;
  std::size_t commentEnd = 0;
  if (m_BeginsInComment) {
    const std::size_t close = bytes.find(CommentEnd);
    if (close == bytes.npos) return isFull ? bytes.size() : 0;
    commentEnd = close + CommentEnd.size();
  }
  return WithWholeComments(bytes, commentEnd, size, isFull);
}

// Small pieces cost the parser more than they save where one follows the other.
void Feeder::HurryParser() {
  m_ForParser = std::min(std::max(MinimumForParser, m_ForParser * 2), PieceSize);
}

// The parser's converter reads ahead of it, so that a byte that is no character is reported as
// another fault, or where the parser happens to be. So such documents are looked through before.
// False if more bytes are needed to know the encoding.
bool Feeder::FindEncoding(std::string_view bytes, bool isFull) {
  const bool isDeclared = m_Head == DeclarationMark && m_Parser.ReadsDeclaration();
  if (isDeclared && !isFull && bytes.find("?>") == bytes.npos) return false;
  const std::string head = std::exchange(m_Head, {});
  if (!isDeclared) return true;
  m_Encoding =
      DeclaredEncoding(m_Parser.Family(), head + std::string(bytes.substr(0, MaximumDeclaration)));
  m_Characters = os::CharacterCheck::Make(m_Encoding);
  if (m_Characters) static_cast<void>(m_Characters->Read(head));
  return true;
}

// Faults before a bad byte are the parser's to report.
void Feeder::PushChecked(std::string_view piece) {
  const std::size_t sound = m_Characters ? m_Characters->Read(piece) : piece.size();
  if (sound > 0) Push(piece.substr(0, sound), false);
  if (sound == piece.size() || Failed()) return;
  Failure failure = FailureOf(BadCharacter(m_Characters->BadByte(), m_Encoding));
  failure.line = m_Characters->Line();
  failure.column = m_Characters->Column();
  m_Parser.Note(std::move(failure));
}

void Feeder::Push(std::string_view piece, bool isLast) {
  if (m_Watch) m_Watch->Read(piece);
  const bool isSound = m_Parser.Push(piece, isLast);
  if (!Failed()) CheckHeldBack();
  if (!Failed()) m_Parser.FollowEvents();
  if (Failed() || !isLast) return;
  if (!isSound) return m_Parser.Fail("the document is not well-formed");
  if (EndsWithinCharacter()) m_Parser.Fail("the document ends within a character");
}

// Bytes that the parser holds back are the begin of something long. The time that it takes for a
// tag grows with the square of the attributes, and it reports their number only afterwards.
void Feeder::CheckHeldBack() {
  const std::string_view held = m_Internals ? m_Internals->HeldBack() : std::string_view();
  const std::size_t size = m_Internals ? held.size() : m_Watch->OpenBytes();
  if (size < PieceSize) return;
  if (size > limits::MarkupBytes)
    return m_Parser.Fail("a tag, comment, instruction or CDATA section has more than " +
                         std::to_string(limits::MarkupBytes) + " bytes");
  std::size_t values = 0;
  if (m_Watch)
    values = m_Watch->OpenValues();
  else if (held[0] == '<' && held[1] != '!' && held[1] != '?')
    values = QuotedValues(held);
  if (values > limits::Attributes)
    m_Parser.Fail("an element has more than " + std::to_string(limits::Attributes) + " attributes");
}

bool Feeder::EndsWithinCharacter() const {
  return m_Watch ? m_Watch->EndsWithinCharacter() : m_Internals->EndsWithinCharacter();
}

}  // namespace

Expected<void> ParseXml(XmlSource& source, XmlEncoding encoding, XmlNames& names, XmlEvents& events,
                        XmlElements* elements) {
  return Feeder(source, encoding, names, events, elements).Run();
}

}  // namespace rastrel::xml
