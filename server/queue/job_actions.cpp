#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/tree.h"
#include "server/queue/job_queue_parts.h"

namespace rastrel::server {
namespace {

using Action = std::function<Expected<void>(Database&, const JobStanding&)>;

// One change by a person, of a job in any state.
Expected<void> Act(JobQueue::Parts& parts, JobId id, const Action& action) {
  Database& rows = *parts.rows;
  Change change(rows);
  if (auto begun = change.State(); !begun) return begun;
  const auto job = StandingOf(rows, id);
  if (!job) return job.Error();
  if (auto done = action(rows, *job); !done) return done;
  if (auto committed = change.Commit(); !committed) return committed;
  parts.bell.Ring();
  return {};
}

Expected<void> SetWish(Database& rows, JobId id, const char* wish) {
  return rows.Prepare("UPDATE jobs SET wish = ? WHERE id = ?")
      .Bind(std::string_view(wish))
      .Bind(id)
      .Run();
}

// Pages as the options write them: 1,3-5.
std::string ListOf(const std::vector<int>& pages) {
  std::string list;
  for (const int page : pages) list += (list.empty() ? "" : ",") + std::to_string(page);
  return list;
}

Expected<void> CheckPages(JobId id, const JobStanding& job, const std::vector<int>& pages) {
  if (job.spool.empty())
    return FailureOf("job " + std::to_string(id) + " has no kept pages", FailureCode::BadInput);
  for (const int page : pages)
    if (page < 1 || page > job.pages)
      return FailureOf("there is no page " + std::to_string(page) + ": job " + std::to_string(id) +
                           " has " + std::to_string(job.pages),
                       FailureCode::BadInput);
  return {};
}

// The options of a job that delivers these pages of another's.
JobOptions OptionsOfReprint(JobOptions options, const std::vector<int>& pages) {
  if (!pages.empty()) options["pages"] = ListOf(pages);
  return options;
}

}  // namespace

Expected<void> JobQueue::Hold(JobId id) {
  return Act(*m_Parts, id, [id](Database& rows, const JobStanding& job) -> Expected<void> {
    switch (job.state) {
      case JobState::Queued:
      case JobState::Ready: return SetState(rows, id, JobState::Held, "");
      // Its pages are made, and then it waits.
      case JobState::Interpreting:
        if (job.wish != "cancel") return SetWish(rows, id, "hold");
        return RefusedIn(id, job.state);
      default: return RefusedIn(id, job.state);
    }
  });
}

Expected<void> JobQueue::Release(JobId id) {
  return Act(*m_Parts, id, [id](Database& rows, const JobStanding& job) -> Expected<void> {
    switch (job.state) {
      case JobState::Interpreting:
        if (job.wish == "hold") return SetWish(rows, id, "");
        return RefusedIn(id, job.state);
      case JobState::Held:
      case JobState::Failed:
      case JobState::Canceled:
      case JobState::Uncertain:
      case JobState::Quarantined: break;
      default: return RefusedIn(id, job.state);
    }
    auto reset = rows.Prepare(
                         "UPDATE jobs SET failures = 0, percent = 0, result = 0, "
                         "sending = -1, sent = -1 WHERE id = ?")
                     .Bind(id)
                     .Run();
    if (!reset) return reset;
    return SetState(rows, id, job.spool.empty() ? JobState::Queued : JobState::Ready, "");
  });
}

Expected<void> JobQueue::Cancel(JobId id) {
  return Act(*m_Parts, id, [id](Database& rows, const JobStanding& job) -> Expected<void> {
    switch (job.state) {
      case JobState::Done:
      case JobState::Canceled: return RefusedIn(id, job.state);
      case JobState::Interpreting:
      case JobState::Delivering: return SetWish(rows, id, "cancel");
      default: return SetState(rows, id, JobState::Canceled, "");
    }
  });
}

Expected<void> JobQueue::Move(JobId id, const std::string& device) {
  if (device.empty()) return FailureOf("no device is named", FailureCode::BadInput);
  return Act(*m_Parts, id, [&](Database& rows, const JobStanding& job) -> Expected<void> {
    if (job.state == JobState::Interpreting || job.state == JobState::Delivering ||
        job.state == JobState::Done)
      return RefusedIn(id, job.state);
    auto moved =
        rows.Prepare("UPDATE jobs SET device = ? WHERE id = ?").Bind(device).Bind(id).Run();
    return moved ? AddEvent(rows, id, "message", "moved to " + device) : moved;
  });
}

Expected<void> JobQueue::SetPriority(JobId id, int priority) {
  if (priority < 1 || priority > 100)
    return FailureOf("priority " + std::to_string(priority) + " is not from 1 to 100",
                     FailureCode::BadInput);
  return Act(*m_Parts, id, [&](Database& rows, const JobStanding& job) -> Expected<void> {
    if (HasEnded(job.state)) return RefusedIn(id, job.state);
    return rows.Prepare("UPDATE jobs SET priority = ? WHERE id = ?")
        .Bind(std::int64_t{priority})
        .Bind(id)
        .Run();
  });
}

Expected<JobId> JobQueue::Reprint(JobId id, const std::vector<int>& pages) {
  const auto original = Find(id);
  if (!original) return original.Error();
  JobId made = 0;
  const auto done =
      Act(*m_Parts, id, [&](Database& rows, const JobStanding& job) -> Expected<void> {
        if (auto fine = CheckPages(id, job, pages); !fine) return fine;
        const JobOptions& options = (*original)->options;
        auto copied =
            rows.Prepare(
                    "INSERT INTO jobs (title, owner, source, device, work, options, priority, "
                    "state, file, bytes, submitted, pages, ink, spool) "
                    "SELECT title, owner, source, device, work, ?, priority, 'ready', file, "
                    "bytes, ?, pages, ink, spool FROM jobs WHERE id = ?")
                .Bind(TextOfOptions(OptionsOfReprint(options, pages)))
                .Bind(Now())
                .Bind(id)
                .Run();
        if (!copied) return copied;
        made = rows.LastRow();
        if (auto told = AddEvent(rows, made, "message", "reprint of job " + std::to_string(id));
            !told)
          return told;
        return AddEvent(rows, made, "state", NameOf(JobState::Ready));
      });
  if (!done) return done.Error();
  return made;
}

Expected<void> JobQueue::AcceptAsDone(JobId id) {
  return Act(*m_Parts, id, [id](Database& rows, const JobStanding& job) -> Expected<void> {
    if (job.state != JobState::Uncertain) return RefusedIn(id, job.state);
    return SetState(rows, id, JobState::Done, "");
  });
}

Expected<std::string> JobQueue::Remove(JobId id) {
  std::string spool;
  const auto done = Act(*m_Parts, id, [&](Database& rows, const JobStanding& job) {
    if (job.state == JobState::Interpreting || job.state == JobState::Delivering)
      return Expected<void>(RefusedIn(id, job.state));
    auto removed = rows.Prepare("DELETE FROM jobs WHERE id = ?").Bind(id).Run();
    if (!removed || job.spool.empty()) return removed;
    Query others = rows.Prepare("SELECT 1 FROM jobs WHERE spool = ? LIMIT 1");
    if (!others.Bind(job.spool).Next()) spool = job.spool;
    return others.End();
  });
  if (!done) return done.Error();
  // A directory that stays is swept at the next start of a server.
  static_cast<void>(os::RemoveNativeTree(DirectoryOf(id)));
  return spool;
}

}  // namespace rastrel::server
