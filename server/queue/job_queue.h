#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"

/// The queue of jobs: one SQLite database (write-ahead log, synchronous FULL) and a directory for
/// each job's file, `server/queue.db` and `server/jobs/ID/` in the data root. Any number of
/// processes of the same user may open it at once: the server, the network printer, the commands. A
/// call that returns success has reached the disk.
namespace rastrel::server {

/// Filter and order of a listing. Empty members take all.
struct JobFilter {
  std::vector<JobState> states;
  std::string owner;
  std::string device;
  std::string text;  ///< part of the title, ignoring case
  Time from = 0;     ///< submitted at or after
  Time until = 0;    ///< submitted before; 0: no limit
  std::string orderBy =
      "id";  ///< id, submitted, ended, title, owner, device, state, priority, pages
  bool descending = true;
  int offset = 0;
  int limit = 100;
};

/// A change that was refused since the job's state does not allow it has the Failure's reason
/// "job N is done", and so on.
class JobQueue {
 public:
  /// Opens the queue of a data root, makes it at first, and brings an older one up to date. Refuses
  /// one of a newer version, and one that others may change.
  [[nodiscard]] static Expected<std::unique_ptr<JobQueue>> Open(const std::string& dataRoot);
  ~JobQueue();

  /// Copies the file into the queue (hidden, flushed, renamed) and adds the row. The job is there
  /// whole, or not at all. Rings the bell of a server that runs.
  [[nodiscard]] Expected<JobId> Submit(const JobRequest& request);

  [[nodiscard]] Expected<std::optional<Job>> Find(JobId id);
  [[nodiscard]] Expected<std::vector<Job>> List(const JobFilter& filter);
  [[nodiscard]] Expected<std::int64_t> Count(const JobFilter& filter);

  /// Takes the next job to interpret or to deliver for a worker: by priority, then fair among
  /// owners, then by age. Nothing if there is none. The claim holds the claiming process's number
  /// and start time, so that a claim of a dead process is found.
  [[nodiscard]] Expected<std::optional<Job>> ClaimToInterpret();
  [[nodiscard]] Expected<std::optional<Job>> ClaimToDeliver(const std::string& device);

  /// The steps of a run, by the process that claimed the job.
  [[nodiscard]] Expected<void> SetProgress(JobId id, int percent);
  [[nodiscard]] Expected<void> AddMessage(JobId id, const std::string& line);
  [[nodiscard]] Expected<void> SetReady(JobId id, const std::string& spool, int pages,
                                        const std::string& ink);
  [[nodiscard]] Expected<void> SetDone(JobId id);
  /// Failed; Quarantined once it failed as often as the settings say.
  [[nodiscard]] Expected<void> SetFailed(JobId id, int result, const std::string& message);
  [[nodiscard]] Expected<void> SetUncertain(JobId id, std::int64_t sentBytes,
                                            const std::string& message);

  /// What a person does.
  [[nodiscard]] Expected<void> Hold(JobId id);
  [[nodiscard]] Expected<void> Release(
      JobId id);                                  ///< also of Failed, Uncertain, Quarantined: again
  [[nodiscard]] Expected<void> Cancel(JobId id);  ///< a running one ends soon, and is Canceled then
  [[nodiscard]] Expected<void> Move(JobId id, const std::string& device);
  [[nodiscard]] Expected<void> SetPriority(JobId id, int priority);
  /// A new job that delivers kept pages of this one again; `pages` empty is all.
  [[nodiscard]] Expected<JobId> Reprint(JobId id, const std::vector<int>& pages);
  /// An uncertain delivery came out, as a person saw.
  [[nodiscard]] Expected<void> AcceptAsDone(JobId id);

  /// Jobs that a process which is no longer there had claimed: interpreting ones are queued again,
  /// delivering ones become Uncertain (or queued again where the device's settings say so).
  [[nodiscard]] Expected<int> RecoverClaims();

  /// Events after a number, oldest first, at most `limit`. Of one job unless `job` is 0.
  [[nodiscard]] Expected<std::vector<JobEvent>> Events(std::int64_t after, JobId job, int limit);

  /// A descriptor that becomes readable when anything changed, by any process; read it to rest it.
  /// Valid as long as the queue. -1 where it can't be had: then look every second.
  [[nodiscard]] int Bell() const;
};

}  // namespace rastrel::server
