#include "rastrel/platform/mfc/date_time.h"

#include <chrono>
#include <cmath>

#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/clock.h"

namespace {

constexpr int FirstYear = 100;
constexpr int LastYear = 9999;
constexpr int SecondsPerDay = 24 * 60 * 60;

constexpr std::chrono::sys_days DayZero =
    std::chrono::year{1899} / std::chrono::December / std::chrono::day{30};

struct CalendarMoment {
  int year;
  int month;
  int day;
  int secondOfDay;
};

// False if the number lies outside the years that a date may have, or is no number at all.
bool ToCalendar(double days, CalendarMoment& moment) {
  constexpr double farAway = 4e6;
  if (!(std::abs(days) < farAway)) return false;
  // The fraction counts forward on either side of day zero.
  const double whole = std::trunc(days);
  auto day = static_cast<int>(whole);
  auto second = static_cast<int>(std::lround(std::abs(days - whole) * SecondsPerDay));
  if (second == SecondsPerDay) {
    second = 0;
    ++day;
  }
  const std::chrono::year_month_day date(DayZero + std::chrono::days(day));
  moment = {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())), second};
  return moment.year >= FirstYear && moment.year <= LastYear;
}

bool IsTimeOfDay(int hour, int minute, int second) {
  return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60;
}

}  // namespace

COleDateTime::COleDateTime(int year, int month, int day, int hour, int minute, int second) {
  m_status = invalid;
  if (year < FirstYear || year > LastYear || month < 1 || month > 12 || day < 1 || day > 31 ||
      !IsTimeOfDay(hour, minute, second))
    return;
  const std::chrono::year_month_day date(std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  if (!date.ok()) return;
  const auto days = static_cast<double>((std::chrono::sys_days(date) - DayZero).count());
  const double fraction = static_cast<double>((hour * 60 + minute) * 60 + second) / SecondsPerDay;
  m_dt = days < 0 ? days - fraction : days + fraction;
  m_status = valid;
}

COleDateTime COleDateTime::GetCurrentTime() {
  const rastrel::os::LocalTime now = rastrel::os::CurrentLocalTime();
  COleDateTime date(now.year, now.month, now.day, now.hour, now.minute, now.second);
  const bool same = date.GetYear() == now.year && date.GetMonth() == now.month &&
                    date.GetDay() == now.day && date.GetHour() == now.hour &&
                    date.GetMinute() == now.minute && date.GetSecond() == now.second;
  if (!same) date.SetStatus(invalid);
  return date;
}

namespace {

template <typename Part>
int PartOf(const COleDateTime& date, Part part) {
  CalendarMoment moment{};
  if (date.GetStatus() != COleDateTime::valid || !ToCalendar(date.m_dt, moment)) return -1;
  return part(moment);
}

}  // namespace

int COleDateTime::GetYear() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.year; });
}
int COleDateTime::GetMonth() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.month; });
}
int COleDateTime::GetDay() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.day; });
}
int COleDateTime::GetHour() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.secondOfDay / 3600; });
}
int COleDateTime::GetMinute() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.secondOfDay / 60 % 60; });
}
int COleDateTime::GetSecond() const {
  return PartOf(*this, [](const CalendarMoment& moment) { return moment.secondOfDay % 60; });
}

CArchive& operator<<(CArchive& archive, const COleDateTime& date) {
  return archive << static_cast<std::int32_t>(date.m_status) << date.m_dt;
}

CArchive& operator>>(CArchive& archive, COleDateTime& date) {
  std::int32_t status = 0;
  double days = 0.0;
  archive >> status >> days;
  date.m_status = static_cast<COleDateTime::DateTimeStatus>(status);
  date.m_dt = days;
  return archive;
}
