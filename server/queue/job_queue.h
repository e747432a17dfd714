#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
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

/// The part of the server's settings that the queue needs.
struct QueuePolicy {
  int quarantineAfter = 3;  ///< failures of a job; 0: never
  /// Jobs that are interpreted ahead for each device; 0: as many as there are.
  int readyJobs = 0;
  std::set<std::string> againAfterCutOff{};  ///< devices that get a delivery again by itself
  std::int64_t jobBytes = 0;                 ///< the largest file that a job may be; 0: no limit
};

/// A change that was refused since the job's state does not allow it has the Failure's reason
/// "job N is done", and so on; one of a job that is not there "there is no job N". Any thread.
class JobQueue {
 public:
  /// Opens the queue of a data root, makes it at first, and brings an older one up to date. Refuses
  /// one of a newer version, and one that others may change.
  [[nodiscard]] static Expected<std::unique_ptr<JobQueue>> Open(const std::string& dataRoot,
                                                                QueuePolicy policy = {});
  ~JobQueue();
  JobQueue(const JobQueue&) = delete;
  JobQueue& operator=(const JobQueue&) = delete;

  /// Copies the file into the queue (hidden, flushed, renamed) and adds the row. The job is there
  /// whole, or not at all. Rings the bell of a server that runs. A file that is larger than the
  /// policy lets is refused as bad input.
  [[nodiscard]] Expected<JobId> Submit(const JobRequest& request);

  /// Nothing if there is no such job, or if it is another owner's and `owner` is not empty.
  [[nodiscard]] Expected<std::optional<Job>> Find(JobId id, const std::string& owner = {});
  [[nodiscard]] Expected<std::vector<Job>> List(const JobFilter& filter);
  [[nodiscard]] Expected<std::int64_t> Count(const JobFilter& filter);

  /// Takes the next job to interpret or to deliver for a worker: by priority, then fair among
  /// owners, then by age. Nothing if there is none. The claim holds the claiming process's
  /// identity, so that a claim of a dead process is found. A device that works on a job gets no
  /// other.
  [[nodiscard]] Expected<std::optional<Job>> ClaimToInterpret();
  [[nodiscard]] Expected<std::optional<Job>> ClaimToDeliver(const std::string& device);

  /// Devices that have a job to deliver and work on none.
  [[nodiscard]] Expected<std::vector<std::string>> DevicesToServe();

  /// The steps of a run, by the process that claimed the job; refused to any other.
  [[nodiscard]] Expected<void> SetProgress(JobId id, int percent);
  [[nodiscard]] Expected<void> AddMessage(JobId id, const std::string& line);
  /// Its pages are kept, and it waits for its device; or it is Held or Canceled, if a person asked
  /// for that meanwhile.
  [[nodiscard]] Expected<void> SetReady(JobId id, const std::string& spool, int pages,
                                        const std::string& ink);
  /// Before the first of `bytes` bytes goes to a device that can't take them back. A delivery
  /// without this call is begun again if it is cut off, and with it the job is Uncertain. Refused
  /// once a person has canceled the job.
  [[nodiscard]] Expected<void> SetSending(JobId id, std::int64_t bytes);
  /// So many bytes went so far.
  [[nodiscard]] Expected<void> SetSent(JobId id, std::int64_t bytes);
  [[nodiscard]] Expected<void> SetDone(JobId id);
  /// Failed; Quarantined once it failed as often as the policy says.
  [[nodiscard]] Expected<void> SetFailed(JobId id, int result, const std::string& message);
  [[nodiscard]] Expected<void> SetUncertain(JobId id, std::int64_t sentBytes,
                                            const std::string& message);
  /// The run was ended since a person canceled the job.
  [[nodiscard]] Expected<void> SetCanceled(JobId id);
  /// Whether a person canceled a job that runs: its worker ends it, and calls SetCanceled.
  [[nodiscard]] Expected<bool> IsCancelAsked(JobId id);

  /// The actions of a person.
  [[nodiscard]] Expected<void> Hold(JobId id);
  /// Of Held; also of Failed, Canceled, Uncertain, Quarantined: again.
  [[nodiscard]] Expected<void> Release(JobId id);
  [[nodiscard]] Expected<void> Cancel(JobId id);  ///< a running one ends soon, and is Canceled then
  [[nodiscard]] Expected<void> Move(JobId id, const std::string& device);
  [[nodiscard]] Expected<void> SetPriority(JobId id, int priority);
  /// A new job that delivers kept pages of this one again; `pages` empty is all.
  [[nodiscard]] Expected<JobId> Reprint(JobId id, const std::vector<int>& pages);
  /// An uncertain delivery came out, as a person saw.
  [[nodiscard]] Expected<void> AcceptAsDone(JobId id);
  /// Takes a job that does not run out of the queue, with its file and story. Returns the name of
  /// kept pages that no job has any more, for the caller to remove; empty if there are none.
  [[nodiscard]] Expected<std::string> Remove(JobId id);

  /// Jobs that a process which is no longer there had claimed: interpreting ones are queued again,
  /// delivering ones are Ready again, or Uncertain if bytes may have gone (Ready where the policy
  /// says so). A worker that died counts as a failure of its job, unless all died: `atStart`, which
  /// also removes the leftovers of cut-off submissions. Returns how many there were.
  [[nodiscard]] Expected<int> RecoverClaims(bool atStart = false);

  /// Bytes of the files of jobs that have ended.
  [[nodiscard]] Expected<std::int64_t> EndedBytes();

  /// Events after a number, oldest first, at most `limit`. Of one job unless `job` is 0, and of one
  /// owner's jobs unless `owner` is empty.
  [[nodiscard]] Expected<std::vector<JobEvent>> Events(std::int64_t after, JobId job, int limit,
                                                       const std::string& owner = {});
  /// The number of the newest event; 0 if there is none.
  [[nodiscard]] Expected<std::int64_t> LastEvent();
  /// A text that is another one when jobs came, went or got another priority, of all owners if
  /// `owner` is empty: changes of which no event speaks.
  [[nodiscard]] Expected<std::string> Mark(const std::string& owner);

  /// A descriptor that becomes readable when anything changed, by any process; read it to rest it
  /// (RestBell). Valid as long as the queue. -1 where it can't be had: then look every second.
  [[nodiscard]] int Bell() const;
  /// Takes all that rang, without waiting.
  void RestBell() const;

  /// The directory of a job in the queue: its file, and its worker's own files.
  [[nodiscard]] std::string DirectoryOf(JobId id) const;

  /// Shared by the sources of this class.
  struct Parts;

 private:
  explicit JobQueue(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> m_Parts;
};

}  // namespace rastrel::server
