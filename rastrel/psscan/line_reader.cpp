#include "rastrel/psscan/line_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace rastrel::psscan {
namespace {

// Reads of this size leave the window in the processor's second cache.
constexpr std::size_t WindowSize = std::size_t{256} << 10;
// A scan of only the first line should not read a whole window.
constexpr std::size_t FirstPiece = std::size_t{8} << 10;
// The room for the rest of the last window: a line, the reading after it, and some more.
constexpr std::size_t Carry = std::size_t{16} << 10;
// From the start of a line that is cut to the start of the next: the byte between is lost.
constexpr std::ptrdiff_t CutStep = ReadSize + 1;

constexpr bool IsReturn(char byte) { return byte == '\n' || byte == '\r'; }

// The distance from this reading to the next, given the line's length.
std::size_t StepOver(const char* line, std::size_t length) {
  return length + 1 < ReadSize && IsReturn(line[length + 1]) ? length + 2 : length + 1;
}

}  // namespace

LineReader::LineReader(os::RandomAccessFile file)
    : m_File(std::move(file)),
      m_Storage(new char[Carry + WindowSize]),
      m_End(m_Storage.get() + Carry),
      m_Begin(m_End),
      m_Here(m_End),
      m_Piece(FirstPiece) {}

void LineReader::Seek(std::uint64_t position) {
  if (m_AtEnd) return;
  const std::uint64_t begin = m_Position - static_cast<std::uint64_t>(m_Here - m_Begin);
  const auto size = static_cast<std::uint64_t>(m_End - m_Begin);
  if (position >= begin && position - begin <= size) {
    m_Here = m_Begin + (position - begin);
  } else {
    KeepLastLine();
    m_End = m_Storage.get() + Carry;
    m_Begin = m_Here = m_End;
    m_EndKnown = false;
  }
  m_Position = position;
}

char* LineReader::Buffer() {
  KeepLastLine();
  return m_Buffer.data();
}

// The last reading may be in the window only, which is about to move or to be written over.
void LineReader::KeepLastLine() {
  if (m_LastLine == nullptr) return;
  std::memcpy(m_Buffer.data(), m_LastLine, ReadSize);
  m_Buffer[ReadSize] = '\0';
  m_Buffer[m_LastLength] = '\0';
  m_LastLine = nullptr;
}

// Reads on until `wanted` bytes lie ahead. The bytes before the position are given up.
// REQUIRES: no more than Carry bytes lie ahead.
void LineReader::Fill(std::size_t wanted) {
  KeepLastLine();
  char* const window = m_Storage.get() + Carry;
  const auto left = static_cast<std::size_t>(m_End - m_Here);
  std::memmove(window - left, m_Here, left);
  m_Here = m_Begin = window - left;
  m_End = window;
  while (!m_EndKnown && static_cast<std::size_t>(m_End - m_Here) < wanted) {
    const auto room = static_cast<std::size_t>(window + WindowSize - m_End);
    const auto ahead = static_cast<std::uint64_t>(m_End - m_Here);
    const auto got = m_File.ReadAt(m_Position + ahead, {m_End, std::min(m_Piece, room)});
    m_Piece = std::min(m_Piece * 8, WindowSize);
    m_End += got.ValueOr(0);
    m_EndKnown = got.ValueOr(0) == 0;
    if (!got) m_Failed = true;
  }
}

std::string_view LineReader::Ahead(std::size_t wanted) {
  if (static_cast<std::size_t>(m_End - m_Here) < wanted && !m_EndKnown) Fill(wanted);
  return {m_Here, m_End};
}

std::string_view LineReader::NextLine() {
  if (m_AtEnd || Ahead(ReadSize).size() < ReadSize) return LineAtEnd();
  const char* const line = m_Here;
  const char* const end = m_Search.lineEnd(line, line + ReadSize);
  m_LastLine = line;
  m_LastLength = static_cast<std::size_t>(end - line);
  const std::size_t step = StepOver(line, m_LastLength);
  // Of a line that is cut, the lost byte may be one that the window or the file doesn't hold.
  if (step <= static_cast<std::size_t>(m_End - line)) {
    MoveTo(line + step);
  } else {
    Seek(m_Position + step);
    return m_Buffer.data();
  }
  return {line, m_LastLength};
}

std::string_view LineReader::LineAtEnd() {
  char* const buffer = Buffer();
  ReadLine(*this, buffer);
  return buffer;
}

// Start of the line after the one at `line`, which has a whole reading ahead.
const char* LineReader::NextStart(const char* line) const {
  const char* const end = m_Search.lineEnd(line, line + ReadSize);
  return line + StepOver(line, static_cast<std::size_t>(end - line));
}

// The last start of a line that is not after `limit`, given an earlier one. Both have a whole
// reading ahead.
const char* LineReader::LastStart(const char* line, const char* limit) const {
  // After CR, LF or zero, any byte but CR and LF begins a line: the byte before ended one, or was
  // swallowed by a line end, or got lost after a cut.
  for (const char* end = limit; end > line;) {
    const char* const found = m_Search.lastLineEnd(line, end);
    if (found == end) break;
    if (!IsReturn(found[1])) {
      line = found + 1;
      break;
    }
    end = found;
  }
  for (const char* next = NextStart(line); next <= limit; next = NextStart(next)) line = next;
  return line;
}

// Reads more bytes into the window. False if the file ends there.
bool LineReader::ExtendWindow() {
  const auto ahead = static_cast<std::size_t>(m_End - m_Here);
  return Ahead(ahead + 1).size() > ahead;
}

// Whether a place inside a line without a line end is one where a cut line goes on. REQUIRES:
// places are asked for from left to right.
class LineReader::CutLines {
 public:
  CutLines(const os::ByteSearch& search, const char* line)
      : m_Search(search), m_Line(line), m_Checked(line) {}

  // REQUIRES: the byte before `place` is no line end.
  bool IsStart(const char* place) {
    const char* const found = m_Search.lastLineEnd(m_Checked, place);
    if (found != place) m_Line = found + 1;
    m_Line += (place - m_Line) / CutStep * CutStep;
    m_Checked = place;
    return m_Line == place;
  }

 private:
  const os::ByteSearch& m_Search;
  const char* m_Line;     // start of the line that m_Checked is in
  const char* m_Checked;  // how far line ends have been looked for
};

void LineReader::SkipLinesWithout(char first, char second) {
  while (!m_AtEnd && Ahead(ReadSize).size() >= ReadSize) {
    const char* const line = m_Here;
    const char* const limit = m_End - ReadSize;
    CutLines cutLines(m_Search, line);
    const auto isStart = [&](const char* place) {
      return place == line || os::IsLineEnd(place[-1]) || cutLines.IsStart(place);
    };
    const auto next = [&](const char* from) {
      return m_Search.pair(from, limit + 2, '%', first, second);
    };
    for (const char* found = next(line); found <= limit; found = next(found + 1)) {
      if (found > line && found[-1] == '%' && isStart(found - 1)) return MoveTo(found - 1);
      if (isStart(found)) return MoveTo(found);
    }
    MoveTo(LastStart(line, limit));
    if (!ExtendWindow()) return;
  }
}

void LineReader::SkipComments(const bool (&letters)[256]) {
  while (!m_AtEnd && Ahead(ReadSize).size() >= ReadSize && *m_Here == '%') {
    const char* const limit = m_End - ReadSize;
    const char* const found = m_Search.unlikeMarkedLines(m_Here, limit + 2, '%', letters);
    MoveTo(LastStart(m_Here, std::min(found, limit)));
    if (found < limit || !ExtendWindow()) return;
  }
}

void LineReader::SkipEmptyLines() {
  while (!m_AtEnd && Ahead(ReadSize).size() >= ReadSize && os::IsLineEnd(*m_Here)) {
    const char* const limit = m_End - ReadSize;
    const char* const next = m_Search.unlike(m_Here, limit + 1, *m_Here);
    // Each zero is a line; of CR and LF two are. The last one is left, since the byte after it
    // counts too.
    const std::ptrdiff_t step = *m_Here == '\0' ? 1 : 2;
    MoveTo(m_Here + (next - m_Here - 1) / step * step);
    if (next <= limit || !ExtendWindow()) return;
  }
}

void ReadLine(LineReader& in, char* buffer) {
  std::size_t count = 0;
  if (!in.AtEnd()) {
    const std::string_view ahead = in.Ahead(ReadSize);
    count = std::min(ahead.size(), ReadSize);
    std::memcpy(buffer, ahead.data(), count);
  }
  buffer[ReadSize] = '\0';
  const char* const end = os::Search().lineEnd(buffer, buffer + ReadSize);
  const auto length = static_cast<std::size_t>(end - buffer);
  buffer[length] = '\0';
  const std::size_t step = StepOver(buffer, length);
  if (count == ReadSize || step < count) {
    in.Seek(in.Tell() + step);
  } else {
    in.SetAtEnd();
  }
}

}  // namespace rastrel::psscan
