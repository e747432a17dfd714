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
  const bool hasDate =
      section.Has(PieceKind::Year) || section.Has(PieceKind::Month) || section.Has(PieceKind::Day);
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
  if (halfDays && !piece.flag) hour = (hour + 11) % 12 + 1;
  return Number(hour, piece.count);
}

std::string ShowPart(const Moment& moment, const Piece& piece, bool halfDays) {
  switch (piece.kind) {
    case PieceKind::Year:
      return piece.count <= 2 ? Number(moment.year % 100, 2) : Number(moment.year, 4);
    case PieceKind::Month: return ShowMonth(moment, piece.count);
    case PieceKind::Day: return ShowDay(moment, piece.count);
    case PieceKind::Hour: return ShowHour(moment, piece, halfDays);
    case PieceKind::Minute:
      return Number(piece.flag ? moment.seconds / 60 : moment.seconds / 60 % 60, piece.count);
    case PieceKind::Second:
      return Number(piece.flag ? moment.seconds : moment.seconds % 60, piece.count);
    case PieceKind::SubSecond: return "." + moment.subSeconds;
    case PieceKind::HalfDay: {
      const bool isMorning = moment.seconds / 3600 < 12;
      if (piece.flag) return isMorning ? "A" : "P";
      return isMorning ? "AM" : "PM";
    }
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
  const bool halfDays = section.Has(PieceKind::HalfDay);
  std::string shown = section.hasElapsed && days < 0 ? "-" : "";
  for (const Piece& piece : section.pieces) shown += ShowPart(moment, piece, halfDays);
  return shown;
}

}  // namespace rastrel::spreadsheet
