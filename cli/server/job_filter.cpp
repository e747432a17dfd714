#include "cli/server/job_filter.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "server/queue/day_time.h"

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

server::Time DayOf(OptionId option, const std::string& text, int later) {
  const auto day = server::BeginOfDay(text, later);
  if (!day) Refuse(option, text, day.Error().why);
  return *day;
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
