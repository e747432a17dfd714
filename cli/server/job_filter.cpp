#include "cli/server/job_filter.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"

namespace rastrel::cli {
namespace {

constexpr int MaximumJobs = 1'000'000;

[[noreturn]] void Refuse(OptionId option, std::string_view text, const std::string& why) {
  throw CommandError(ExitStatus::WrongUse,
                     Describe(RefusedValue(OptionOf(option).name, text, why)));
}

std::vector<server::JobState> StatesOf(const std::string& text) {
  std::vector<server::JobState> states;
  for (const std::string_view name : Split(text, ',')) {
    server::JobState state{};
    if (!server::StateOf(std::string(name), state))
      Refuse(OptionId::QueueState, text, "there is no state '" + std::string(name) + "'");
    states.push_back(state);
  }
  return states;
}

// The beginning of a day, `later` days after the one that is named.
server::Time DayOf(OptionId option, const std::string& text, int later) {
  std::tm day{};
  const auto parts = Split(text, '-');
  const std::string why = "give a day as YYYY-MM-DD";
  if (parts.size() != 3) Refuse(option, text, why);
  std::array<int, 3> numbers{};
  constexpr std::array<std::size_t, 3> Lengths{4, 2, 2};
  for (std::size_t index = 0; index < numbers.size(); ++index) {
    if (parts[index].size() != Lengths.at(index) ||
        !std::ranges::all_of(parts[index], [](char one) { return one >= '0' && one <= '9'; }))
      Refuse(option, text, why);
    numbers.at(index) = std::stoi(std::string(parts[index]));
  }
  day.tm_year = numbers[0] - 1900;
  day.tm_mon = numbers[1] - 1;
  day.tm_mday = numbers[2] + later;
  day.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&day);
  std::tm check{};
  const std::time_t first = seconds - std::time_t{later} * 86400 + (later == 0 ? 0 : 43200);
  // The 31st of April would count as the 1st of May.
  if (seconds == -1 || ::localtime_r(&first, &check) == nullptr || check.tm_mon != numbers[1] - 1)
    Refuse(option, text, "there is no such day");
  return std::int64_t{seconds} * 1000;
}

}  // namespace

server::JobFilter FilterOf(const Invocation& invocation) {
  server::JobFilter filter;
  const auto value = [&](OptionId id) { return invocation.ValueOr(id, ""); };
  if (invocation.Has(OptionId::QueueState)) filter.states = StatesOf(value(OptionId::QueueState));
  filter.owner = value(OptionId::QueueOwner);
  filter.device = value(OptionId::QueueDevice);
  filter.text = value(OptionId::QueueText);
  if (invocation.Has(OptionId::QueueFrom))
    filter.from = DayOf(OptionId::QueueFrom, value(OptionId::QueueFrom), 0);
  if (invocation.Has(OptionId::QueueUntil))
    filter.until = DayOf(OptionId::QueueUntil, value(OptionId::QueueUntil), 1);
  if (invocation.Has(OptionId::QueueSort)) {
    filter.orderBy = value(OptionId::QueueSort);
    const auto names = Split(OptionOf(OptionId::QueueSort).choices, ' ');
    if (std::ranges::find(names, filter.orderBy) == names.end())
      Refuse(OptionId::QueueSort, filter.orderBy,
             std::string("give one of: ") + OptionOf(OptionId::QueueSort).choices);
  }
  filter.descending = !invocation.Has(OptionId::QueueAscending);
  filter.limit = OrEnd(
      ExitStatus::WrongUse,
      WholeNumberOf("--limit", invocation.ValueOr(OptionId::QueueLimit, "100"), 1, MaximumJobs));
  filter.offset = OrEnd(
      ExitStatus::WrongUse,
      WholeNumberOf("--offset", invocation.ValueOr(OptionId::QueueOffset, "0"), 0, INT32_MAX));
  return filter;
}

std::string TimeText(server::Time time) {
  if (time == 0) return {};
  const std::time_t seconds = time / 1000;
  std::tm parts{};
  std::array<char, 32> text{};
  if (::localtime_r(&seconds, &parts) == nullptr) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

}  // namespace rastrel::cli
