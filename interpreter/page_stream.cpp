#include "interpreter/page_stream.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace rastrel::interpreter {
namespace {

constexpr unsigned SideLimit = 100000000;  // keeps a page's bytes within 64 bits

bool ReadPositive(const std::string& token, unsigned& number) {
  const char* const end = token.data() + token.size();
  const auto [stop, error] = std::from_chars(token.data(), end, number);
  return error == std::errc() && stop == end && number > 0 && number <= SideLimit;
}

}  // namespace

bool PageStream::Fail(const char* reason) {
  m_Reason = reason;
  return false;
}

bool PageStream::Add(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    if (m_Rest == 0) {
      if (!AddHeaderByte(static_cast<char>(bytes.front()))) return false;
      bytes = bytes.subspan(1);
      continue;
    }
    const std::size_t taken = std::min(m_Rest, bytes.size());
    if (!m_Receiver.AddPixels(bytes.first(taken))) return false;
    m_Rest -= taken;
    bytes = bytes.subspan(taken);
    if (m_Rest == 0 && !m_Receiver.EndPage()) return false;
  }
  return true;
}

// A header is four words between whitespace, with comments from '#' to the line's end: the kind,
// width, height, and the largest sample. One whitespace character closes it.
bool PageStream::AddHeaderByte(char byte) {
  if (++m_HeaderBytes > HeaderLimit) return Fail("an image's header is too long");
  if (m_InComment) {
    m_InComment = byte != '\n' && byte != '\r';
    return true;
  }
  const bool whitespace = byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
  if (!whitespace && byte != '#') {
    m_Token += byte;
    return true;
  }
  m_InComment = byte == '#';
  return m_Token.empty() || FinishToken();
}

bool PageStream::FinishToken() {
  const std::string token = std::exchange(m_Token, {});
  switch (m_TokenCount++) {
    case 0:
      m_Size.channels = token == "P6" ? 3 : 1;
      return token == "P6" || token == "P5" || Fail("an image of another kind");
    case 1: return ReadPositive(token, m_Size.width) || Fail("a bad width");
    case 2: return ReadPositive(token, m_Size.height) || Fail("a bad height");
    default: break;
  }
  if (token != "255") return Fail("samples of another depth");
  m_TokenCount = 0;
  m_HeaderBytes = 0;
  m_Whole = m_Size.RowBytes() * m_Size.height;
  m_Rest = m_Whole;
  return m_Receiver.BeginPage(m_Size);
}

bool PageStream::Finish() {
  if (m_Rest > 0) return Fail("the stream ends within a page");
  return m_HeaderBytes == 0 || Fail("the stream ends within a header");
}

double PageStream::PresentShare() const {
  if (m_Rest == 0) return 0;
  return 1.0 - static_cast<double>(m_Rest) / static_cast<double>(m_Whole);
}

}  // namespace rastrel::interpreter
