#pragma once

#include <memory>
#include <string>

#include "server/queue/bell.h"
#include "server/queue/database.h"
#include "server/queue/job_queue.h"

namespace rastrel::server {

/// The members of a queue, which its sources share.
struct JobQueue::Parts {
  std::string directory;  ///< DATA ROOT/server
  QueuePolicy policy;
  std::unique_ptr<Database> rows;   ///< changes that reach the disk
  std::unique_ptr<Database> quick;  ///< changes that a power cut may take back
  std::unique_ptr<Database> views;  ///< reads only
  server::Bell bell;
  std::string self;  ///< identity of this process, for its claims
};

/// The columns of a job as JobOfRow reads them.
extern const char* const JobColumns;
[[nodiscard]] Job JobOfRow(const Query& row);

/// The options as a JSON object, and back. A text that is none gives no options.
[[nodiscard]] std::string TextOfOptions(const JobOptions& options);
[[nodiscard]] JobOptions OptionsOfText(const std::string& text);

[[nodiscard]] Time Now();

/// Adds a line to a job's story.
[[nodiscard]] Expected<void> AddEvent(Database& database, JobId job, const char* kind,
                                      const std::string& text);

/// A job's columns that decide on a change of it.
struct JobStanding {
  std::string title;
  JobState state = JobState::Queued;
  std::string claim;
  std::string wish;  ///< "", "hold" or "cancel": for a job that runs
  std::string spool;
  std::string device;
  int failures = 0;
  int pages = 0;
  std::int64_t sending = -1;
  std::int64_t sent = -1;
};
/// Of a job that must be there.
[[nodiscard]] Expected<JobStanding> StandingOf(Database& database, JobId id);
/// "job 7 is done".
[[nodiscard]] Failure RefusedIn(JobId id, JobState state);

/// Changes the state, with an event in the job's story. A job that ends, or no longer runs, loses
/// its claim and wish; `message` replaces its message.
[[nodiscard]] Expected<void> SetState(Database& database, JobId id, JobState state,
                                      const std::string& message);

}  // namespace rastrel::server
