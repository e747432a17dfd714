#include "spreadsheet/iso_date.h"

#include <chrono>
#include <optional>

#include "spreadsheet/xml_reading.h"

namespace rastrel::spreadsheet {
namespace {

// Days since 30 December 1899.
std::optional<double> DaysOf(std::string_view text) {
  const auto number = [text](std::size_t at, std::size_t size) -> std::optional<int> {
    if (text.size() < at + size) return std::nullopt;
    const auto value = WholeNumber(text.substr(at, size));
    if (!value) return std::nullopt;
    return static_cast<int>(*value);
  };
  const auto year = number(0, 4);
  const auto month = number(5, 2);
  const auto day = number(8, 2);
  if (!year || !month || !day || text[4] != '-' || text[7] != '-') return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day))};
  if (!date.ok()) return std::nullopt;
  constexpr int daysTo1970 = 25569;
  const auto days =
      static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count() + daysTo1970);
  if (text.size() == 10) return days;
  const auto hour = number(11, 2);
  const auto minute = number(14, 2);
  const auto second = number(17, 2);
  if (text[10] != 'T' || !hour || !minute || *hour > 24 || *minute > 59) return std::nullopt;
  return days + (*hour * 3600 + *minute * 60 + second.value_or(0)) / 86400.0;
}

}  // namespace

std::string ShowIsoDate(std::string_view text, const FormatCode& code, DateSystem dates) {
  constexpr double daysBetweenSystems = 1462;
  const auto days = DaysOf(text);
  if (!days || !code.ShowsDates()) return std::string(text);
  return code.ShowNumber(*days - (dates == DateSystem::From1904 ? daysBetweenSystems : 0), dates);
}

}  // namespace rastrel::spreadsheet
