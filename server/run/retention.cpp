#include <algorithm>

#include "server/run/scheduler.h"

namespace rastrel::server {
namespace {

constexpr Time DayMilliseconds = 86'400'000;
constexpr std::int64_t Megabyte = 1'000'000;
constexpr int JobsAtOnce = 100;

JobFilter OldestEnded() {
  JobFilter filter;
  filter.states = {JobState::Done, JobState::Failed, JobState::Canceled};
  filter.orderBy = "ended";
  filter.descending = false;
  filter.limit = JobsAtOnce;
  return filter;
}

}  // namespace

Expected<int> ApplyRetention(JobQueue& queue, const Retention& retention, Time now,
                             const std::function<void(const std::string&)>& removePages) {
  const JobFilter filter = OldestEnded();
  auto count = queue.Count(filter);
  if (!count) return count.Error();
  auto bytes = queue.EndedBytes();
  if (!bytes) return bytes.Error();
  const auto goes = [&](const Job& job) {
    if (retention.days > 0 && job.ended < now - retention.days * DayMilliseconds) return true;
    if (retention.jobs > 0 && *count > retention.jobs) return true;
    return retention.megabytes > 0 && *bytes > retention.megabytes * Megabyte;
  };
  int removed = 0;
  for (;;) {
    const auto jobs = queue.List(filter);
    if (!jobs) return jobs.Error();
    for (const Job& job : *jobs) {
      if (!goes(job)) return removed;
      const auto spool = queue.Remove(job.id);
      // A person may have released it meanwhile; it is looked at again next time.
      if (!spool) return removed;
      if (!spool->empty()) removePages(*spool);
      --*count;
      *bytes -= job.bytes;
      ++removed;
    }
    if (jobs->size() < static_cast<std::size_t>(JobsAtOnce)) return removed;
  }
}

}  // namespace rastrel::server
