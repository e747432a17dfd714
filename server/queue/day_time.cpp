#include "server/queue/day_time.h"

#include <array>
#include <cstddef>
#include <ctime>

namespace rastrel::server {
namespace {

constexpr std::array<std::size_t, 3> Lengths{4, 2, 2};

// "2026-03-31" as numbers; false for any other text.
bool ReadDay(const std::string& text, std::array<int, 3>& numbers) {
  std::size_t at = 0;
  for (std::size_t part = 0; part < numbers.size(); ++part) {
    if (part > 0 && (at >= text.size() || text[at++] != '-')) return false;
    numbers.at(part) = 0;
    for (std::size_t digit = 0; digit < Lengths.at(part); ++digit, ++at) {
      if (at >= text.size() || text[at] < '0' || text[at] > '9') return false;
      numbers.at(part) = numbers.at(part) * 10 + (text[at] - '0');
    }
  }
  return at == text.size();
}

}  // namespace

Expected<Time> BeginOfDay(const std::string& text, int later) {
  std::array<int, 3> numbers{};
  if (!ReadDay(text, numbers)) return FailureOf("give a day as YYYY-MM-DD", FailureCode::BadInput);
  std::tm day{};
  day.tm_year = numbers[0] - 1900;
  day.tm_mon = numbers[1] - 1;
  day.tm_mday = numbers[2] + later;
  day.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&day);
  std::tm check{};
  const std::time_t first = seconds - std::time_t{later} * 86400 + (later == 0 ? 0 : 43200);
  // The 31st of April would count as the 1st of May.
  if (seconds == -1 || ::localtime_r(&first, &check) == nullptr || check.tm_mon != numbers[1] - 1)
    return FailureOf("there is no such day", FailureCode::BadInput);
  return Time{seconds} * 1000;
}

}  // namespace rastrel::server
