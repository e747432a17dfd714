// Dates and times by the parts of a format.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "spreadsheet/format_code.h"

namespace rastrel::spreadsheet {
namespace {

constexpr double SecondsADay = 86400;
constexpr double DaysBetweenSystems = 1462;
// Years beyond four digits, which no program shows as a date.
constexpr double LastDay = 2958466;
constexpr double FirstDay = -693594;
constexpr const char* NoDate = "#####";

constexpr std::array<std::string_view, 12> MonthNames{
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> DayNames{"Saturday",  "Sunday",   "Monday", "Tuesday",
                                                   "Wednesday", "Thursday", "Friday"};

struct Moment {
  std::int64_t day = 0;  // since 30 December 1899
  std::int64_t year = 0;
  unsigned month = 1;
  unsigned dayOfMonth = 1;
  std::int64_t seconds = 0;  // of the day; of all days if elapsed
  std::string subSeconds;    // digits after the point
};

// Days to a date of the Gregorian calendar, by eras of 400 years.
void FindDate(Moment& moment) {
  const std::int64_t shifted = moment.day + 693899;  // since 1 March of year 0
  const std::int64_t era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
  const std::int64_t dayOfEra = shifted - era * 146097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
  moment.dayOfMonth = static_cast<unsigned>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  moment.month = static_cast<unsigned>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  moment.year = yearOfEra + era * 400 + (moment.month <= 2 ? 1 : 0);
}

std::string Number(std::int64_t number, int width) {
  std::string digits = std::to_string(number);
  if (static_cast<int>(digits.size()) < width)
    digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
  return digits;
}

int SubSecondPlaces(const FormatSection& section) {
  constexpr int maximum = 9;
  for (const Piece& piece : section.pieces)
    if (piece.kind == PieceKind::SubSecond) return std::min(piece.count, maximum);
  return 0;
}

// Seconds and their fraction. A fraction that would be rounded up to the next second is
// cut off, so that 23:59:59.99 does not become a minute of 60 seconds.
void SetSeconds(Moment& moment, double seconds, int places) {
  const double whole = std::floor(seconds);
  const auto scale = static_cast<std::int64_t>(std::llround(std::pow(10.0, places)));
  const auto fraction = std::min(std::llround((seconds - whole) * static_cast<double>(scale)),
                                 static_cast<long long>(scale - 1));
  moment.seconds = static_cast<std::int64_t>(whole);
  moment.subSeconds = places > 0 ? Number(fraction, places) : "";
}

Moment MomentOf(const FormatSection& section, double days) {
  Moment moment;
  const int places = SubSecondPlaces(section);
  const double scale = std::pow(10.0, places);
  if (section.hasElapsed) {
    SetSeconds(moment, std::round(std::fabs(days) * SecondsADay * scale) / scale, places);
    return moment;
  }
  // A binary fraction of a day is seldom a whole number of seconds; its error is far below this.
  constexpr double precision = 1e5;
  double seconds = std::round((days - std::floor(days)) * SecondsADay * precision) / precision;
  moment.day = static_cast<std::int64_t>(std::floor(days));
  const bool hasDate = std::ranges::any_of(section.pieces, [](const Piece& piece) {
    return piece.kind >= PieceKind::Year && piece.kind <= PieceKind::Day;
  });
  const bool hasTime = section.Has(PieceKind::Hour) || section.Has(PieceKind::Minute) ||
                       section.Has(PieceKind::Second);
  if (hasTime && hasDate && std::round(seconds * scale) / scale >= SecondsADay) {
    seconds = 0;
    ++moment.day;
  }
  seconds = std::min(seconds, SecondsADay - 1 / precision);
  SetSeconds(moment, seconds, places);
  FindDate(moment);
  return moment;
}

// An era of the Japanese calendar, by its first day since 30 December 1899 and the year before its
// first.
struct Era {
  std::int64_t firstDay;
  std::int64_t yearBefore;
  std::array<std::string_view, 3> names;
};
constexpr std::array JapaneseEras{
    Era{43586, 2018, {"R", "\u4EE4", "\u4EE4\u548C"}},   // 1 May 2019
    Era{32516, 1988, {"H", "\u5E73", "\u5E73\u6210"}},   // 8 January 1989
    Era{9856, 1925, {"S", "\u662D", "\u662D\u548C"}},    // 25 December 1926
    Era{4595, 1911, {"T", "\u5927", "\u5927\u6B63"}},    // 30 July 1912
    Era{-11662, 1867, {"M", "\u660E", "\u660E\u6CBB"}},  // 25 January 1868
};
constexpr Era TaiwaneseEra{
    4384, 1911, {"\u6C11\u570B", "\u6C11\u570B", "\u4E2D\u83EF\u6C11\u570B"}};  // 1 January 1912
constexpr Era NoEra{0, 0, {}};

const Era& EraOf(const Moment& moment, Calendar calendar) {
  if (calendar == Calendar::Taiwanese && moment.day >= TaiwaneseEra.firstDay) return TaiwaneseEra;
  if (calendar != Calendar::Japanese) return NoEra;
  const auto found = std::ranges::find_if(
      JapaneseEras, [&](const Era& era) { return moment.day >= era.firstDay; });
  return found == JapaneseEras.end() ? NoEra : *found;
}

std::string ShowEraYear(const Moment& moment, const Piece& piece, Calendar calendar) {
  const std::int64_t before = EraOf(moment, calendar).yearBefore;
  if (before == 0) return Number(moment.year, 4);
  return Number(moment.year - before, std::min(piece.count, 2));
}

std::string_view ShowEra(const Moment& moment, const Piece& piece, Calendar calendar) {
  return EraOf(moment, calendar).names[static_cast<std::size_t>(std::min(piece.count, 3) - 1)];
}

std::string ShowQuarter(const Moment& moment, const Piece& piece) {
  constexpr std::array names{"1st quarter", "2nd quarter", "3rd quarter", "4th quarter"};
  const unsigned quarter = (moment.month - 1) / 3;
  return piece.count > 1 ? names[quarter] : "Q" + std::to_string(quarter + 1);
}

std::string ShowMonth(const Moment& moment, int letters) {
  const std::string_view name = MonthNames[moment.month - 1];
  if (letters <= 2) return Number(moment.month, letters);
  if (letters == 3) return std::string(name.substr(0, 3));
  return std::string(letters == 5 ? name.substr(0, 1) : name);
}

std::string ShowDay(const Moment& moment, int letters) {
  if (letters <= 2) return Number(moment.dayOfMonth, letters);
  const std::string_view name = DayNames[static_cast<std::size_t>(((moment.day % 7) + 7) % 7)];
  return std::string(letters == 3 ? name.substr(0, 3) : name);
}

std::string ShowHour(const Moment& moment, const Piece& piece, bool halfDays) {
  std::int64_t hour = moment.seconds / 3600;
  if (piece.flag) return Number(hour, piece.count);
  if (halfDays) hour = (hour + 11) % 12 + 1;
  return Number(hour, std::min(piece.count, 2));
}

std::string ShowMinutes(const Moment& moment, const Piece& piece) {
  if (piece.flag) return Number(moment.seconds / 60, piece.count);
  return Number(moment.seconds / 60 % 60, std::min(piece.count, 2));
}

std::string ShowSeconds(const Moment& moment, const Piece& piece) {
  if (piece.flag) return Number(moment.seconds, piece.count);
  return Number(moment.seconds % 60, std::min(piece.count, 2));
}

std::string ShowHalfDay(const Moment& moment, const Piece& piece) {
  const bool isMorning = moment.seconds / 3600 < 12;
  if (piece.text.empty()) return isMorning ? "AM" : "PM";
  return {isMorning ? piece.text.front() : piece.text.back()};
}

std::string ShowPart(const Moment& moment, const Piece& piece, const FormatSection& section) {
  switch (piece.kind) {
    case PieceKind::Year:
      return piece.count <= 2 ? Number(moment.year % 100, 2) : Number(moment.year, 4);
    case PieceKind::Month: return ShowMonth(moment, piece.count);
    case PieceKind::Day: return ShowDay(moment, piece.count);
    case PieceKind::EraYear: return ShowEraYear(moment, piece, section.calendar);
    case PieceKind::Era: return std::string(ShowEra(moment, piece, section.calendar));
    case PieceKind::Quarter: return ShowQuarter(moment, piece);
    case PieceKind::Hour: return ShowHour(moment, piece, section.Has(PieceKind::HalfDay));
    case PieceKind::Minute: return ShowMinutes(moment, piece);
    case PieceKind::Second: return ShowSeconds(moment, piece);
    case PieceKind::SubSecond: return "." + moment.subSeconds;
    case PieceKind::HalfDay: return ShowHalfDay(moment, piece);
    case PieceKind::Literal:
    case PieceKind::Digit: return piece.text;
    default: return {};
  }
}

}  // namespace

std::string ShowDate(const FormatSection& section, double days, DateSystem dates) {
  if (dates == DateSystem::From1904 && !section.hasElapsed) days += DaysBetweenSystems;
  if (!(days < LastDay && days > FirstDay)) return NoDate;
  const Moment moment = MomentOf(section, days);
  std::string shown = section.hasElapsed && days < 0 ? "-" : "";
  for (const Piece& piece : section.pieces) shown += ShowPart(moment, piece, section);
  return shown;
}

}  // namespace rastrel::spreadsheet
