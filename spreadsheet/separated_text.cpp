#include "spreadsheet/separated_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "rastrel/platform/os/text.h"

namespace rastrel::spreadsheet {
namespace {

constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view LittleEndianMark = "\xFF\xFE";
constexpr std::string_view BigEndianMark = "\xFE\xFF";

std::string FromUtf16(std::string_view bytes, bool littleEndian) {
  std::vector<std::uint16_t> units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units.push_back(
        static_cast<std::uint16_t>(littleEndian ? first | second << 8 : first << 8 | second));
  }
  return os::Utf8FromWide(os::WideFromUtf16(units));
}

// Reads one table from its start to its end.
class Reader {
 public:
  Reader(std::string_view text, char separator, RowSink& sink)
      : m_Text(text), m_Separator(separator), m_Sink(sink) {}

  Expected<void> Read() {
    while (m_Place < m_Text.size()) {
      if (auto read = ReadRow(); !read) return read;
    }
    return {};
  }

 private:
  [[nodiscard]] Failure Refused(std::uint64_t line, const std::string& why) const {
    return FailureOf("line " + std::to_string(line) + ": " + why);
  }

  [[nodiscard]] bool AtLineEnd() const {
    return m_Place >= m_Text.size() || m_Text[m_Place] == '\n' || m_Text[m_Place] == '\r';
  }

  void PassLineEnd() {
    if (m_Place >= m_Text.size()) return;
    const bool both = m_Text.substr(m_Place, 2) == "\r\n";
    m_Place += both ? 2 : 1;
    ++m_Line;
  }

  Expected<void> ReadRow() {
    const std::uint64_t line = m_Line;
    std::vector<std::string> cells;
    while (true) {
      if (cells.size() == limits::Columns)
        return Refused(line, "a row has more than " + std::to_string(limits::Columns) + " values");
      auto value = ReadValue();
      if (!value) return value.Error();
      cells.push_back(*std::move(value));
      if (AtLineEnd()) break;
      ++m_Place;  // the separator
    }
    PassLineEnd();
    if (++m_Row > limits::Rows)
      return Refused(line, "there are more than " + std::to_string(limits::Rows) + " rows");
    while (!cells.empty() && cells.back().empty()) cells.pop_back();
    return cells.empty() ? Expected<void>() : m_Sink.Row(m_Row, cells);
  }

  Expected<std::string> ReadValue() {
    const std::uint64_t line = m_Line;
    if (m_Place < m_Text.size() && m_Text[m_Place] == '"') return ReadQuoted();
    const std::array ends{m_Separator, '\n', '\r'};
    const std::size_t end =
        std::min(m_Text.find_first_of({ends.data(), ends.size()}, m_Place), m_Text.size());
    std::string value(m_Text.substr(m_Place, end - m_Place));
    m_Place = end;
    if (value.size() > limits::CellBytes) return TooLong(line);
    return value;
  }

  Expected<std::string> ReadQuoted() {
    const std::uint64_t line = m_Line;
    std::string value;
    ++m_Place;
    while (true) {
      const std::size_t end = m_Text.find('"', m_Place);
      if (end == m_Text.npos) return Refused(line, "a value in double quotes has no end");
      const std::string_view piece = m_Text.substr(m_Place, end - m_Place);
      CountLines(piece);
      value += piece;
      if (value.size() > limits::CellBytes) return TooLong(line);
      m_Place = end + 1;
      if (m_Place >= m_Text.size() || m_Text[m_Place] != '"') break;
      value += '"';
      ++m_Place;
    }
    if (!AtLineEnd() && m_Text[m_Place] != m_Separator)
      return Refused(m_Line, "a value goes on after its closing double quote");
    return value;
  }

  // A carriage return and a line feed are one line end.
  void CountLines(std::string_view piece) {
    for (std::size_t i = 0; i < piece.size(); ++i) {
      const bool feed = piece[i] == '\n' && (i == 0 || piece[i - 1] != '\r');
      if (feed || piece[i] == '\r') ++m_Line;
    }
  }

  [[nodiscard]] Failure TooLong(std::uint64_t line) const {
    return Refused(line, "a value has more than " + std::to_string(limits::CellBytes) + " bytes");
  }

  std::string_view m_Text;
  char m_Separator;
  RowSink& m_Sink;
  std::size_t m_Place = 0;
  std::uint64_t m_Line = 1;
  std::uint64_t m_Row = 0;
};

}  // namespace

std::string TextOfTable(std::string_view bytes) {
  if (bytes.starts_with(LittleEndianMark)) return FromUtf16(bytes.substr(2), true);
  if (bytes.starts_with(BigEndianMark)) return FromUtf16(bytes.substr(2), false);
  if (bytes.starts_with(Utf8Mark)) bytes.remove_prefix(Utf8Mark.size());
  return os::Utf8FromUtf8OrAnsi(bytes);
}

char SeparatorOf(std::string_view text) {
  constexpr std::string_view known = ",;\t";
  std::array<std::size_t, known.size()> counts{};
  bool quoted = false;
  for (const char letter : text) {
    if (letter == '"') quoted = !quoted;
    if (quoted) continue;
    if (letter == '\n' || letter == '\r') break;
    const std::size_t at = known.find(letter);
    if (at != known.npos) ++counts[at];
  }
  return known[static_cast<std::size_t>(std::ranges::max_element(counts) - counts.begin())];
}

Expected<void> ReadSeparatedText(std::string_view text, char separator, RowSink& sink) {
  return Reader(text, separator, sink).Read();
}

}  // namespace rastrel::spreadsheet
