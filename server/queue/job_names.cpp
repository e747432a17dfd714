#include <algorithm>
#include <array>
#include <utility>

#include "server/queue/job.h"

namespace rastrel::server {
namespace {

constexpr std::array<std::pair<JobState, const char*>, 10> StateNames{{
    {JobState::Queued, "queued"},
    {JobState::Held, "held"},
    {JobState::Interpreting, "interpreting"},
    {JobState::Ready, "ready"},
    {JobState::Delivering, "delivering"},
    {JobState::Done, "done"},
    {JobState::Failed, "failed"},
    {JobState::Canceled, "canceled"},
    {JobState::Uncertain, "uncertain"},
    {JobState::Quarantined, "quarantined"},
}};

constexpr std::array<std::pair<JobWork, const char*>, 3> WorkNames{{
    {JobWork::Print, "print"},
    {JobWork::Cut, "cut"},
    {JobWork::Merge, "merge"},
}};

}  // namespace

const char* NameOf(JobState state) {
  return std::ranges::find(StateNames, state, &decltype(StateNames)::value_type::first)->second;
}

bool StateOf(const std::string& name, JobState& state) {
  const auto* const found =
      std::ranges::find(StateNames, name, [](const auto& one) { return std::string(one.second); });
  if (found == StateNames.end()) return false;
  state = found->first;
  return true;
}

const char* NameOf(JobWork work) {
  return std::ranges::find(WorkNames, work, &decltype(WorkNames)::value_type::first)->second;
}

bool WorkOf(const std::string& name, JobWork& work) {
  const auto* const found =
      std::ranges::find(WorkNames, name, [](const auto& one) { return std::string(one.second); });
  if (found == WorkNames.end()) return false;
  work = found->first;
  return true;
}

bool HasEnded(JobState state) {
  return state == JobState::Done || state == JobState::Failed || state == JobState::Canceled;
}

}  // namespace rastrel::server
