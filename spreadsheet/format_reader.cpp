// Reads the sections of number formats.

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>

#include "spreadsheet/format_code.h"

namespace rastrel::spreadsheet {
namespace {

constexpr std::string_view GeneralWord = "General";
// The system's own formats of dates and times, which are English here.
constexpr std::string_view SystemLongDate = "dddd, mmmm d, yyyy";
constexpr std::string_view SystemTime = "h:mm:ss AM/PM";

bool SameLetter(char one, char other) {
  return std::tolower(static_cast<unsigned char>(one)) ==
         std::tolower(static_cast<unsigned char>(other));
}

bool BeginsWith(std::string_view text, std::string_view word) {
  if (text.size() < word.size()) return false;
  for (std::size_t at = 0; at < word.size(); ++at)
    if (!SameLetter(text[at], word[at])) return false;
  return true;
}

// Bytes of the character at the front of UTF-8 text.
std::size_t CharacterSize(std::string_view text) {
  std::size_t size = 1;
  while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) ++size;
  return size;
}

class SectionReader {
 public:
  explicit SectionReader(std::string_view code) : m_Rest(code) {}

  FormatSection Read() {
    while (!m_Rest.empty()) ReadPiece();
    if (!m_SystemFormat.empty() && m_Section.isDate) return SectionReader(m_SystemFormat).Read();
    if (HasDateAfterPlaces()) ShowGeneral();
    FindMinutes();
    FindFraction();
    return std::move(m_Section);
  }

 private:
  std::string_view Take(std::size_t count) {
    const std::string_view taken = m_Rest.substr(0, count);
    m_Rest.remove_prefix(taken.size());
    return taken;
  }
  void Add(PieceKind kind, std::string_view text = {}, int count = 1, bool flag = false) {
    if (kind == PieceKind::Literal && !m_Section.pieces.empty() &&
        m_Section.pieces.back().kind == PieceKind::Literal)
      m_Section.pieces.back().text += text;
    else
      m_Section.pieces.push_back({kind, std::string(text), count, flag});
  }

  void ReadPiece() {
    const char letter = m_Rest.front();
    if (letter == '"') return ReadQuoted();
    if (letter == '[') return ReadBracket();
    if (letter == '\\') return ReadAfter("", true);
    if (letter == '_') return ReadAfter(" ", false);
    if (letter == '*') return ReadAfter("", false);
    if (BeginsWith(m_Rest, GeneralWord)) {
      Take(GeneralWord.size());
      return Add(PieceKind::General);
    }
    if (letter == '@') {
      Take(1);
      m_Section.hasText = true;
      return Add(PieceKind::Text);
    }
    if (ReadHalfDay() || ReadExponent() || ReadDatePart() || ReadNumberPart()) return;
    Add(PieceKind::Literal, Take(CharacterSize(m_Rest)));
  }

  void ReadQuoted() {
    Take(1);
    Add(PieceKind::Literal, Take(m_Rest.find('"')));
    Take(1);
  }

  // The next character, for itself or for its width or for filling.
  void ReadAfter(std::string_view shown, bool showsIt) {
    Take(1);
    if (m_Rest.empty()) return;
    const std::string_view character = Take(CharacterSize(m_Rest));
    const std::string_view words = showsIt ? character : shown;
    if (!words.empty()) Add(PieceKind::Literal, words);
  }

  void ReadBracket() {
    const std::size_t end = m_Rest.find(']');
    if (end == m_Rest.npos) return Add(PieceKind::Literal, Take(m_Rest.size()));
    const std::string_view content = Take(end + 1).substr(1, end - 1);
    if (content.empty()) return;
    if (content.front() == '$') return ReadLocale(content.substr(1));
    if (std::string_view("<>=").find(content.front()) != std::string_view::npos)
      return ReadCondition(content);
    if (content.find_first_not_of("hH") == content.npos)
      AddElapsed(PieceKind::Hour, content);
    else if (content.find_first_not_of("mM") == content.npos)
      AddElapsed(PieceKind::Minute, content);
    else if (content.find_first_not_of("sS") == content.npos)
      AddElapsed(PieceKind::Second, content);
    // Anything else is a color, or has no effect on the text.
  }

  // "0.0 m" is no format: its place begins a number, and its letter a date.
  [[nodiscard]] bool HasDateAfterPlaces() const {
    const auto first = std::ranges::find_if(m_Section.pieces, [](const Piece& piece) {
      return piece.kind == PieceKind::Digit || piece.kind >= PieceKind::Year;
    });
    return m_Section.isDate && first != m_Section.pieces.end() && first->kind == PieceKind::Digit;
  }

  void ShowGeneral() {
    m_Section.pieces.clear();
    Add(PieceKind::General);
    m_Section.isDate = m_Section.hasElapsed = false;
  }

  // "CURRENCY-LANGUAGE". The language is a number of 32 bits in hexadecimal digits, whose lower
  // half is the language's own number (18.8.31).
  void ReadLocale(std::string_view content) {
    const std::size_t dash = std::min(content.find('-'), content.size());
    if (dash > 0) Add(PieceKind::Literal, content.substr(0, dash));
    const std::string_view language = content.substr(std::min(dash + 1, content.size()));
    if (BeginsWith(language, "x-sysdate")) m_SystemFormat = SystemLongDate;
    if (BeginsWith(language, "x-systime")) m_SystemFormat = SystemTime;
    std::uint32_t number = 0;
    const char* end = language.data() + language.size();
    if (std::from_chars(language.data(), end, number, 16).ptr != end) return;
    switch (number & 0xFFFFU) {
      case 0xF800: m_SystemFormat = SystemLongDate; break;
      case 0xF400: m_SystemFormat = SystemTime; break;
      case 0x0411: m_Section.calendar = Calendar::Japanese; break;
      case 0x0404: m_Section.calendar = Calendar::Taiwanese; break;
      default: break;
    }
  }

  void AddElapsed(PieceKind kind, std::string_view letters) {
    m_Section.isDate = m_Section.hasElapsed = true;
    Add(kind, {}, static_cast<int>(letters.size()), true);
    if (kind == PieceKind::Second) ReadSubSecond();
  }

  void ReadCondition(std::string_view content) {
    const std::size_t sign = content.find_first_not_of("<>=");
    if (sign == content.npos) return;
    Condition condition{std::string(content.substr(0, sign)), 0};
    const std::string_view number = content.substr(sign);
    std::from_chars(number.data(), number.data() + number.size(), condition.bound);
    m_Section.condition = condition;
  }

  bool ReadHalfDay() {
    for (const std::string_view word : {std::string_view("AM/PM"), std::string_view("A/P")}) {
      if (!BeginsWith(m_Rest, word)) continue;
      const std::string_view letters = Take(word.size());
      m_Section.isDate = true;
      Add(PieceKind::HalfDay, letters.size() == 3 ? letters : "");
      return true;
    }
    return false;
  }

  bool ReadExponent() {
    const bool isOne = m_Rest.size() > 1 && SameLetter(m_Rest[0], 'e') &&
                       (m_Rest[1] == '+' || m_Rest[1] == '-') && m_Section.Has(PieceKind::Digit);
    if (!isOne) return false;
    const std::string_view letters = Take(2);
    Add(PieceKind::Exponent, letters.substr(0, 1), 1, letters[1] == '+');
    return true;
  }

  bool ReadDatePart() {
    const char letter = m_Rest.front();
    std::size_t count = 1;
    while (count < m_Rest.size() && SameLetter(m_Rest[count], letter)) ++count;
    PieceKind kind = PieceKind::Literal;
    switch (std::tolower(static_cast<unsigned char>(letter))) {
      case 'y': kind = PieceKind::Year; break;
      case 'm': kind = PieceKind::Month; break;
      case 'd': kind = PieceKind::Day; break;
      case 'h': kind = PieceKind::Hour; break;
      case 's': kind = PieceKind::Second; break;
      case 'e': kind = PieceKind::EraYear; break;
      case 'q': kind = PieceKind::Quarter; break;
      case 'g': kind = PieceKind::Era; break;
      default: return false;
    }
    if (!CanBe(kind)) return false;
    Take(count);
    m_Section.isDate = true;
    Add(kind, {}, static_cast<int>(count));
    if (kind == PieceKind::Second) ReadSubSecond();
    return true;
  }

  // Letters that are rare in dates are more likely a unit without its quotes next to a number, and
  // only some calendars have eras.
  [[nodiscard]] bool CanBe(PieceKind kind) const {
    const bool isRare = kind == PieceKind::EraYear || kind == PieceKind::Quarter;
    if (kind == PieceKind::Era) return m_Section.calendar != Calendar::Gregorian;
    return !isRare || !(m_Section.Has(PieceKind::Digit) || m_Section.Has(PieceKind::General));
  }

  void ReadSubSecond() {
    if (!m_Rest.starts_with(".0")) return;
    Take(1);
    const std::string_view zeros = Take(std::min(m_Rest.find_first_not_of('0'), m_Rest.size()));
    Add(PieceKind::SubSecond, {}, static_cast<int>(zeros.size()));
  }

  bool ReadNumberPart() {
    const char letter = m_Rest.front();
    if (letter == '0' || letter == '#' || letter == '?') {
      Add(PieceKind::Digit, Take(1));
    } else if (letter == '.' && !m_Section.isDate && !m_Section.Has(PieceKind::Point)) {
      Take(1);
      Add(PieceKind::Point);
    } else if (letter == ',' && m_Section.Has(PieceKind::Digit) && !m_Section.isDate) {
      ReadCommas();
    } else if (letter == '%') {
      m_Section.isPercentage = true;
      Add(PieceKind::Literal, Take(1));
    } else {
      return false;
    }
    return true;
  }

  // Between places commas ask for groups, after the last one for a division.
  void ReadCommas() {
    const std::size_t count = std::min(m_Rest.find_first_not_of(','), m_Rest.size());
    Take(count);
    const bool goesOn =
        !m_Rest.empty() && std::string_view("0#?").find(m_Rest.front()) != std::string_view::npos;
    if (goesOn)
      m_Section.isGrouped = true;
    else
      m_Section.thousands += static_cast<int>(count);
  }

  // "m" means minutes next to hours or seconds.
  void FindMinutes() {
    const auto isDatePart = [](const Piece& piece) {
      return piece.kind >= PieceKind::Year && piece.kind <= PieceKind::Second;
    };
    const Piece* before = nullptr;
    auto& pieces = m_Section.pieces;
    for (std::size_t at = 0; at < pieces.size(); ++at) {
      if (!isDatePart(pieces[at])) continue;
      std::size_t next = at + 1;
      while (next < pieces.size() && !isDatePart(pieces[next])) ++next;
      const bool isMinute = (before != nullptr && before->kind == PieceKind::Hour) ||
                            (next < pieces.size() && pieces[next].kind == PieceKind::Second);
      if (pieces[at].kind == PieceKind::Month && pieces[at].count <= 2 && isMinute)
        pieces[at].kind = PieceKind::Minute;
      before = &pieces[at];
    }
  }

  // A bar with a place on its left and a number on its right makes a fraction.
  void FindFraction() {
    auto& pieces = m_Section.pieces;
    for (std::size_t at = 1; at < pieces.size(); ++at) {
      const bool found = pieces[at].kind == PieceKind::Literal && pieces[at].text.front() == '/' &&
                         pieces[at - 1].kind == PieceKind::Digit && !m_Section.isDate;
      if (!found) continue;
      const std::string denominator = pieces[at].text.substr(1);
      pieces[at] = {PieceKind::Bar, {}, 0, false};
      // A denominator of its own: digits that are no places, up to the first that is no digit.
      std::size_t digits = std::min(denominator.find_first_not_of("123456789"), denominator.size());
      std::string fixed = denominator.substr(0, digits);
      std::size_t behind = at + 1;
      while (digits == denominator.size() && !fixed.empty() && behind < pieces.size() &&
             pieces[behind].kind == PieceKind::Digit && pieces[behind].text == "0") {
        fixed += '0';
        pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(behind));
      }
      constexpr std::size_t mostDigits = 9;
      if (fixed.size() <= mostDigits && !fixed.empty()) pieces[at].count = std::stoi(fixed);
      if (digits < denominator.size())
        pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(behind),
                      {PieceKind::Literal, denominator.substr(digits), 1, false});
      return;
    }
  }

  std::string_view m_Rest;
  std::string_view m_SystemFormat;  // that takes the place of the section's dates; empty if none
  FormatSection m_Section;
};

}  // namespace

FormatSection ReadFormatSection(std::string_view code) { return SectionReader(code).Read(); }

}  // namespace rastrel::spreadsheet
