#include "rastrel/xml/input_watch.h"

#include <algorithm>
#include <array>

namespace rastrel::xml {
namespace {

struct Marks {
  std::string_view begin;
  std::string_view end;
};
constexpr std::array<Marks, 3> MarkedKinds{{{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}};
constexpr std::size_t MaximumMark = 9;

constexpr unsigned FirstHighSurrogate = 0xD800;
constexpr unsigned FirstLowSurrogate = 0xDC00;
constexpr unsigned LastSurrogate = 0xDFFF;

// A character beyond ASCII, of which only the length counts. Halves of a pair are two bytes each.
std::string_view BytesOf(unsigned unit) {
  const bool isHalf = unit >= FirstHighSurrogate && unit <= LastSurrogate;
  return unit < 0x800 || isHalf ? "\x7F\x7F" : "\x7F\x7F\x7F";
}

}  // namespace

void XmlInputWatch::Read(std::string_view bytes) {
  if (m_Family == XmlEncodingFamily::Utf16) return ReadUtf16(bytes);
  const std::size_t close = bytes.rfind('>');
  if (close != bytes.npos) m_HasLeadByte = false;
  const std::string_view tail = bytes.substr(close == bytes.npos ? 0 : close + 1);
  m_HasLeadByte = m_HasLeadByte || std::ranges::any_of(tail, [](char byte) { return byte < 0; });
  ReadAscii(bytes);
}

void XmlInputWatch::ReadUtf16(std::string_view bytes) {
  std::string ascii;
  ascii.reserve(bytes.size());
  for (const char byte : bytes) {
    m_Unit += byte;
    if (m_Unit.size() < 2) continue;
    const auto first = static_cast<unsigned char>(m_Unit[m_BigEndian ? 0 : 1]);
    const auto second = static_cast<unsigned char>(m_Unit[m_BigEndian ? 1 : 0]);
    m_LastUnit = first * 256U + second;
    m_Unit.clear();
    if (m_LastUnit < 0x80)
      ascii += static_cast<char>(m_LastUnit);
    else
      ascii += BytesOf(m_LastUnit);
  }
  ReadAscii(ascii);
}

void XmlInputWatch::ReadAscii(std::string_view bytes) {
  while (!bytes.empty()) {
    if (m_Kind == Kind::Content) {
      const std::size_t begin = bytes.find('<');
      if (begin == bytes.npos) return;
      bytes.remove_prefix(begin + 1);
      m_Kind = Kind::Tag;
      m_Size = 1;
      m_Values = 0;
      m_Quote = 0;
      m_Mark = "<";
    } else {
      ReadInMarkup(bytes.front());
      bytes.remove_prefix(1);
    }
  }
}

void XmlInputWatch::ReadInMarkup(char byte) {
  ++m_Size;
  if (m_Kind == Kind::Tag) {
    if (m_Mark.size() < MaximumMark) m_Mark += byte;
    return ReadInTag(byte);
  }
  // All but the last byte of an end are the same one.
  if (byte == m_End[m_Found]) {
    ++m_Found;
  } else if (byte != m_End.front() || m_Found + 1 != m_End.size()) {
    m_Found = byte == m_End.front() ? 1 : 0;
  }
  if (m_Found == m_End.size()) m_Kind = Kind::Content;
}

void XmlInputWatch::ReadInTag(char byte) {
  if (m_Quote != 0) {
    if (byte == m_Quote) m_Quote = 0;
  } else if (byte == '"' || byte == '\'') {
    m_Quote = byte;
    ++m_Values;
  } else if (byte == '>') {
    m_Kind = Kind::Content;
  } else if (m_Size == m_Mark.size()) {
    ReadMark();
  }
}

void XmlInputWatch::ReadMark() {
  const auto marks = std::ranges::find(MarkedKinds, m_Mark, &Marks::begin);
  if (marks == MarkedKinds.end()) return;
  m_Kind = Kind::Marked;
  m_End = marks->end;
  m_Found = 0;
}

bool XmlInputWatch::EndsWithinCharacter() const {
  const bool isHalf = m_LastUnit >= FirstHighSurrogate && m_LastUnit < FirstLowSurrogate;
  return m_HasLeadByte || !m_Unit.empty() || isHalf;
}

}  // namespace rastrel::xml
