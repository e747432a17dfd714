#include <algorithm>
#include <functional>
#include <string>

#include "server/queue/job_queue_parts.h"
#include "server/queue/shown_text.h"

namespace rastrel::server {
namespace {

constexpr std::size_t MaximumLine = 4096;

Expected<JobStanding> OwnJob(JobQueue::Parts& parts, Database& database, JobId id,
                             std::initializer_list<JobState> states) {
  auto job = StandingOf(database, id);
  if (!job) return job;
  if (std::ranges::find(states, job->state) == states.end()) return RefusedIn(id, job->state);
  if (job->claim != parts.self)
    return FailureOf("job " + std::to_string(id) + " belongs to another worker");
  return job;
}

using Step = std::function<Expected<void>(Database&, const JobStanding&)>;

// One change of a job that this process has claimed.
Expected<void> MakeStep(JobQueue::Parts& parts, Database& database, JobId id,
                        std::initializer_list<JobState> states, const Step& step) {
  Change change(database);
  if (auto begun = change.State(); !begun) return begun;
  const auto job = OwnJob(parts, database, id, states);
  if (!job) return job.Error();
  if (auto done = step(database, *job); !done) return done;
  if (auto committed = change.Commit(); !committed) return committed;
  parts.bell.Ring();
  return {};
}

Expected<void> SetNumber(Database& database, JobId id, const char* column, std::int64_t value) {
  return database.Prepare(std::string("UPDATE jobs SET ") + column + " = ? WHERE id = ?")
      .Bind(value)
      .Bind(id)
      .Run();
}

constexpr std::initializer_list<JobState> Runs{JobState::Interpreting, JobState::Delivering};

}  // namespace

Expected<void> JobQueue::SetProgress(JobId id, int percent) {
  return MakeStep(*m_Parts, *m_Parts->quick, id, Runs, [&](Database& rows, const JobStanding&) {
    auto set = SetNumber(rows, id, "percent", std::clamp(percent, 0, 100));
    return set ? AddEvent(rows, id, "progress", std::to_string(percent)) : set;
  });
}

Expected<void> JobQueue::AddMessage(JobId id, const std::string& line) {
  return MakeStep(*m_Parts, *m_Parts->quick, id, Runs, [&](Database& rows, const JobStanding& job) {
    return AddEvent(rows, id, "message",
                    WithTitle(line, DirectoryOf(id), job.title).substr(0, MaximumLine));
  });
}

Expected<void> JobQueue::SetReady(JobId id, const std::string& spool, int pages,
                                  const std::string& ink) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, {JobState::Interpreting},
                  [&](Database& rows, const JobStanding& job) {
                    auto kept = rows.Prepare(
                                        "UPDATE jobs SET spool = ?, pages = ?, ink = ?, "
                                        "percent = 100 WHERE id = ?")
                                    .Bind(spool)
                                    .Bind(std::int64_t{pages})
                                    .Bind(ink)
                                    .Bind(id)
                                    .Run();
                    if (!kept) return kept;
                    const JobState next = job.wish == "cancel" ? JobState::Canceled
                                          : job.wish == "hold" ? JobState::Held
                                                               : JobState::Ready;
                    return SetState(rows, id, next, "");
                  });
}

Expected<void> JobQueue::SetSending(JobId id, std::int64_t bytes) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, {JobState::Delivering},
                  [&](Database& rows, const JobStanding& job) -> Expected<void> {
                    if (job.wish == "cancel")
                      return FailureOf("job " + std::to_string(id) + " is to be canceled");
                    return SetNumber(rows, id, "sending", bytes);
                  });
}

Expected<void> JobQueue::SetSent(JobId id, std::int64_t bytes) {
  return MakeStep(
      *m_Parts, *m_Parts->quick, id, {JobState::Delivering},
      [&](Database& rows, const JobStanding&) { return SetNumber(rows, id, "sent", bytes); });
}

Expected<void> JobQueue::SetDone(JobId id) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, {JobState::Delivering},
                  [&](Database& rows, const JobStanding&) {
                    auto set = rows.Prepare(
                                       "UPDATE jobs SET percent = 100, failures = 0, "
                                       "result = 0 WHERE id = ?")
                                   .Bind(id)
                                   .Run();
                    return set ? SetState(rows, id, JobState::Done, "") : set;
                  });
}

Expected<void> JobQueue::SetFailed(JobId id, int result, const std::string& message) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, Runs, [&](Database& rows, const JobStanding& job) {
    const int failures = job.failures + 1;
    auto set = rows.Prepare("UPDATE jobs SET failures = ?, result = ? WHERE id = ?")
                   .Bind(std::int64_t{failures})
                   .Bind(std::int64_t{result})
                   .Bind(id)
                   .Run();
    const int limit = m_Parts->policy.quarantineAfter;
    const bool isEnough = limit > 0 && failures >= limit;
    return set ? SetState(rows, id, isEnough ? JobState::Quarantined : JobState::Failed,
                          WithTitle(message, DirectoryOf(id), job.title))
               : set;
  });
}

Expected<void> JobQueue::SetUncertain(JobId id, std::int64_t sentBytes,
                                      const std::string& message) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, {JobState::Delivering},
                  [&](Database& rows, const JobStanding& job) {
                    auto set = SetNumber(rows, id, "sent", sentBytes);
                    return set ? SetState(rows, id, JobState::Uncertain,
                                          WithTitle(message, DirectoryOf(id), job.title))
                               : set;
                  });
}

Expected<void> JobQueue::SetCanceled(JobId id) {
  return MakeStep(*m_Parts, *m_Parts->rows, id, Runs,
                  [&](Database& rows, const JobStanding& job) -> Expected<void> {
                    if (job.wish != "cancel")
                      return FailureOf("nobody canceled job " + std::to_string(id));
                    return SetState(rows, id, JobState::Canceled, "");
                  });
}

Expected<bool> JobQueue::IsCancelAsked(JobId id) {
  Database& views = *m_Parts->views;
  const auto lock = views.Lock();
  const auto job = StandingOf(views, id);
  if (!job) return job.Error();
  return job->wish == "cancel";
}

}  // namespace rastrel::server
