#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "rastrel/xml/characters.h"

namespace rastrel::xml {

/// Follows a document's bytes on their way to a parser whose buffers can't be looked at, to find
/// out how much of them the parser must be holding back. Knows only where tags, comments,
/// instructions and CDATA sections begin and end, which is the same in UTF-8 and in all encodings
/// that have ASCII in the same bytes; UTF-16 is reduced to that. For a document that is not
/// well-formed the answers mean nothing, but the parser refuses it. One thread.
class XmlInputWatch {
 public:
  /// By the document's first bytes.
  explicit XmlInputWatch(XmlEncodingFamily family, bool bigEndian)
      : m_Family(family), m_BigEndian(bigEndian) {}

  /// The next bytes of the document.
  void Read(std::string_view bytes);

  /// Bytes of UTF-8 of the tag, comment, instruction or section that has begun and not ended; 0
  /// between them.
  [[nodiscard]] std::size_t OpenBytes() const { return m_Kind == Kind::Content ? 0 : m_Size; }
  /// How many quoted values it has, if it is a tag; else 0.
  [[nodiscard]] std::size_t OpenValues() const { return m_Kind == Kind::Tag ? m_Values : 0; }
  /// Whether the last bytes are the begin of a character: a lead byte after the last tag, or half a
  /// unit or pair of UTF-16. Not known of encodings that use neither.
  [[nodiscard]] bool EndsWithinCharacter() const;

 private:
  enum class Kind { Content, Tag, Marked };

  void ReadAscii(std::string_view bytes);
  void ReadInMarkup(char byte);
  void ReadInTag(char byte);
  void ReadMark();
  void ReadUtf16(std::string_view bytes);

  XmlEncodingFamily m_Family;
  bool m_BigEndian;
  std::string m_Unit;          // of UTF-16, begun but not whole
  unsigned m_LastUnit = 0;     // the last whole one
  bool m_HasLeadByte = false;  // since the last bracket that closes a tag

  Kind m_Kind = Kind::Content;
  std::size_t m_Size = 0;
  std::size_t m_Values = 0;
  char m_Quote = 0;         // of the value that is open; 0 without one
  std::string m_Mark;       // the first bytes, up to the longest mark
  std::string_view m_End;   // by which it ends, if it is marked
  std::size_t m_Found = 0;  // bytes of that end that were there last
};

}  // namespace rastrel::xml
