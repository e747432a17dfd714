#include "spreadsheet/format_code.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "spreadsheet/decimal_digits.h"

namespace rastrel::spreadsheet {
namespace {

// Splits at semicolons that are neither quoted nor escaped.
std::vector<std::string_view> SectionsOf(std::string_view code) {
  std::vector<std::string_view> sections;
  std::size_t begin = 0;
  bool quoted = false;
  for (std::size_t at = 0; at < code.size(); ++at) {
    const char letter = code[at];
    if (letter == '"') quoted = !quoted;
    if (quoted) continue;
    if (letter == '\\' || letter == '_' || letter == '*') ++at;
    if (letter == '[') at = std::min(code.find(']', at), code.size());
    if (letter != ';') continue;
    sections.push_back(code.substr(begin, at - begin));
    begin = at + 1;
  }
  sections.push_back(code.substr(begin));
  return sections;
}

std::string ShowPlain(const FormatSection& section, const std::string& text) {
  std::string shown;
  for (const Piece& piece : section.pieces)
    if (piece.kind == PieceKind::Literal)
      shown += piece.text;
    else if (piece.kind == PieceKind::General || piece.kind == PieceKind::Text)
      shown += text;
  return shown;
}

struct BuiltIn {
  int number;
  std::string_view code;
};

constexpr std::array BuiltIns{
    BuiltIn{1, "0"},
    BuiltIn{2, "0.00"},
    BuiltIn{3, "#,##0"},
    BuiltIn{4, "#,##0.00"},
    BuiltIn{5, "\"$\"#,##0_);(\"$\"#,##0)"},
    BuiltIn{6, "\"$\"#,##0_);[Red](\"$\"#,##0)"},
    BuiltIn{7, "\"$\"#,##0.00_);(\"$\"#,##0.00)"},
    BuiltIn{8, "\"$\"#,##0.00_);[Red](\"$\"#,##0.00)"},
    BuiltIn{9, "0%"},
    BuiltIn{10, "0.00%"},
    BuiltIn{11, "0.00E+00"},
    BuiltIn{12, "# ?/?"},
    BuiltIn{13, "# ?\?/?\?"},
    BuiltIn{14, "m/d/yyyy"},
    BuiltIn{15, "d-mmm-yy"},
    BuiltIn{16, "d-mmm"},
    BuiltIn{17, "mmm-yy"},
    BuiltIn{18, "h:mm AM/PM"},
    BuiltIn{19, "h:mm:ss AM/PM"},
    BuiltIn{20, "h:mm"},
    BuiltIn{21, "h:mm:ss"},
    BuiltIn{22, "m/d/yyyy h:mm"},
    BuiltIn{37, "#,##0_);(#,##0)"},
    BuiltIn{38, "#,##0_);[Red](#,##0)"},
    BuiltIn{39, "#,##0.00_);(#,##0.00)"},
    BuiltIn{40, "#,##0.00_);[Red](#,##0.00)"},
    BuiltIn{41, "_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)"},
    BuiltIn{42, "_(\"$\"* #,##0_);_(\"$\"* (#,##0);_(\"$\"* \"-\"_);_(@_)"},
    BuiltIn{43, "_(* #,##0.00_);_(* (#,##0.00);_(* \"-\"?\?_);_(@_)"},
    BuiltIn{44, "_(\"$\"* #,##0.00_);_(\"$\"* (#,##0.00);_(\"$\"* \"-\"?\?_);_(@_)"},
    BuiltIn{45, "mm:ss"},
    BuiltIn{46, "[h]:mm:ss"},
    BuiltIn{47, "mm:ss.0"},
    BuiltIn{48, "##0.0E+0"},
    BuiltIn{49, "@"},
};

// Dates and times of East Asian programs, whose forms elsewhere are those of this place.
constexpr std::string_view EastAsianFormat(int number) {
  if (number >= 32 && number <= 35) return "h:mm:ss";
  return (number >= 27 && number <= 36) || (number >= 50 && number <= 58) ? "m/d/yyyy" : "General";
}

}  // namespace

bool Condition::Holds(double value) const {
  if (comparison == "<") return value < bound;
  if (comparison == "<=") return value <= bound;
  if (comparison == ">") return value > bound;
  if (comparison == ">=") return value >= bound;
  if (comparison == "<>") return value != bound;
  return value == bound;
}

bool Condition::IsForNegatives() const {
  return bound == 0 && (comparison == "<" || comparison == "<=");
}

bool FormatSection::Has(PieceKind kind) const {
  return std::ranges::find(pieces, kind, &Piece::kind) != pieces.end();
}

std::string_view BuiltInFormat(int number) {
  const auto found = std::ranges::find(BuiltIns, number, &BuiltIn::number);
  return found == BuiltIns.end() ? EastAsianFormat(number) : found->code;
}

FormatCode::FormatCode(std::string_view code) {
  constexpr std::size_t mostNumberSections = 3;
  for (const std::string_view part : SectionsOf(code)) {
    FormatSection section = ReadFormatSection(part);
    if (section.hasText || m_Numbers.size() == mostNumberSections)
      m_Text = std::move(section);
    else
      m_Numbers.push_back(std::move(section));
  }
  // A format of text alone shows numbers as they are, and so does one that says nothing.
  if (code.empty()) m_Numbers.clear();
  if (m_Numbers.empty()) m_Numbers.push_back(ReadFormatSection("General"));
  AddFallback();
}

// Numbers that meet no condition are shown as they are if no section is left for them.
void FormatCode::AddFallback() {
  m_HasFallback = m_Numbers.front().condition && m_Numbers.size() < 3 && m_Numbers.back().condition;
  if (m_HasFallback) m_Numbers.push_back(ReadFormatSection("General"));
}

bool FormatCode::IsGeneral() const {
  const auto& pieces = m_Numbers.front().pieces;
  return m_Numbers.size() == 1 && pieces.size() == 1 && pieces.front().kind == PieceKind::General;
}

std::size_t FormatCode::SectionFor(double value) const {
  const std::size_t count = m_Numbers.size();
  const auto& first = m_Numbers.front().condition;
  if (count == 1) return 0;
  if (first) {
    if (first->Holds(value)) return 0;
    if (count == 2) return 1;
    const auto& second = m_Numbers[1].condition;
    return (second ? second->Holds(value) : value < 0) ? 1 : 2;
  }
  if (count == 2 || m_Numbers[1].condition) {
    const auto& second = m_Numbers[1].condition;
    if (second ? second->Holds(value) : value < 0) return 1;
    return count == 3 && value == 0 ? 2 : 0;
  }
  return value > 0 ? 0 : value < 0 ? 1 : 2;
}

// Further sections say themselves how a negative number looks.
bool FormatCode::ShowsSign(std::size_t section) const {
  const auto& condition = m_Numbers[section].condition;
  if (section == 0) return !condition || !condition->IsForNegatives();
  return m_HasFallback && section == m_Numbers.size() - 1;
}

std::string FormatCode::ShowNumber(double value, DateSystem dates) const {
  if (!std::isfinite(value)) return "#NUM!";
  const std::size_t index = SectionFor(value);
  const FormatSection& section = m_Numbers[index];
  const bool isNegative = value < 0 && ShowsSign(index);
  if (section.isDate) {
    const bool hasSignOfItsOwn = section.hasElapsed && !isNegative;
    return ShowDate(section, hasSignOfItsOwn ? std::fabs(value) : value, dates);
  }
  if (section.Has(PieceKind::General))
    return (isNegative ? "-" : "") + ShowPlain(section, ShowGeneral(std::fabs(value)));
  return ShowDigits(section, std::fabs(value), isNegative);
}

std::string FormatCode::ShowText(const std::string& text) const {
  return m_Text ? ShowPlain(*m_Text, text) : text;
}

}  // namespace rastrel::spreadsheet
