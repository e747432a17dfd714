#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Number formats of cells, as ECMA-376 Part 1, 18.8.30 and 18.8.31 have them: "#,##0.00",
/// "d/m/yy",
/// "[h]:mm", "0%;[Red]-0%". All text is UTF-8. Names of months and days are English.
namespace rastrel::spreadsheet {

/// Where day 0 lies.
enum class DateSystem {
  From1900,  ///< 30 December 1899; days before 1 March 1900 are a day off in other programs
  From1904,  ///< 1 January 1904
};

enum class PieceKind {
  Literal,   ///< text
  Digit,     ///< one place of a number; `text` is 0, # or ?
  Point,     ///< between its integer and its fraction
  Exponent,  ///< `text` is E or e, `flag` if a plus is shown; its digits follow
  Bar,       ///< of a fraction
  General,   ///< the number as it is
  Text,      ///< the cell's text
  Year,
  EraYear,  ///< the year as its calendar counts it
  Era,      ///< `count` 1 for its letter, 2 for its short name, 3 for its name
  Quarter,  ///< "Q1", or "1st quarter" if `count` is 2 or more
  Month,
  Day,
  Hour,
  Minute,
  Second,
  SubSecond,  ///< `count` digits after the second, with the point
  HalfDay,    ///< AM or PM, or if `text` is not empty its first or last letter
};

/// One piece of a section.
struct Piece {
  PieceKind kind = PieceKind::Literal;
  std::string text;
  int count = 1;      ///< letters of a part of a date: 2 for "mm"
  bool flag = false;  ///< of a part of a date: elapsed, as in [h]
};

/// A condition such as [>=100].
struct Condition {
  std::string comparison;  ///< one of < <= > >= = <>
  double bound = 0;
  [[nodiscard]] bool Holds(double value) const;
  /// Whether it lets negative numbers in and no positive one, as [<0] does: such a section takes
  /// the place of the second one, whose literals show the sign.
  [[nodiscard]] bool IsForNegatives() const;
};

/// How years of eras are counted.
enum class Calendar {
  Gregorian,  ///< has no eras; a year of an era is the year
  Japanese,   ///< eras of the emperors since Meiji
  Taiwanese,  ///< from 1912 on
};

/// The part of a format between two semicolons.
struct FormatSection {
  std::vector<Piece> pieces;
  std::optional<Condition> condition;
  bool isDate = false;
  bool hasElapsed = false;
  bool hasText = false;       ///< holds an @
  bool isGrouped = false;     ///< thousands are set apart
  int thousands = 0;          ///< commas after the last place: each divides by 1000
  bool isPercentage = false;  ///< holds a %: the number is multiplied by 100
  Calendar calendar = Calendar::Gregorian;
  [[nodiscard]] bool Has(PieceKind kind) const;
};

/// Reads one section. Anything can be read: a character without a meaning is literal.
[[nodiscard]] FormatSection ReadFormatSection(std::string_view code);

/// A number format.
class FormatCode {
 public:
  /// "General".
  FormatCode() : FormatCode("General") {}
  explicit FormatCode(std::string_view code);

  /// The text of a cell of this format.
  [[nodiscard]] std::string ShowNumber(double value, DateSystem dates) const;
  [[nodiscard]] std::string ShowText(const std::string& text) const;
  /// Whether it shows positive numbers as dates or times.
  [[nodiscard]] bool ShowsDates() const { return m_Numbers.front().isDate; }
  /// Whether it shows numbers as they are: "General", or a format of texts alone.
  [[nodiscard]] bool IsGeneral() const;

 private:
  void AddFallback();
  [[nodiscard]] std::size_t SectionFor(double value) const;
  [[nodiscard]] bool ShowsSign(std::size_t section) const;

  std::vector<FormatSection> m_Numbers;  // at least one
  bool m_HasFallback = false;            // the last one is for numbers that no condition lets in
  std::optional<FormatSection> m_Text;
};

/// The code of a format number that has no definition of its own (18.8.30); "General" for one that
/// the standard doesn't define.
[[nodiscard]] std::string_view BuiltInFormat(int number);

/// A section's pieces for a number of zero or more: digits, fractions and exponents. `sign` goes in
/// front unless no digit other than zero is shown.
[[nodiscard]] std::string ShowDigits(const FormatSection& section, double magnitude,
                                     bool isNegative);
/// The same of a date or time, by the days since day 0 of the system.
[[nodiscard]] std::string ShowDate(const FormatSection& section, double days, DateSystem dates);

}  // namespace rastrel::spreadsheet
