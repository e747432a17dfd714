#pragma once

#include <functional>
#include <memory>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job_queue.h"
#include "server/settings/server_settings.h"

namespace rastrel::server {

/// How a worker is started, and pages are removed.
struct WorkerProgram {
  std::string executable;  ///< native path
  /// Arguments, after the program's name, of a worker that interprets, and of one that delivers;
  /// the device's name is added to the latter.
  std::string interpret;
  std::string deliver;
  /// Removes kept pages by their name in the spool.
  std::function<void(const std::string& spool)> removePages;
  /// Whether workers can be started, with the reason why not: a worker reads the settings anew,
  /// and one that can't would end at once, again and again. Empty: always.
  std::function<Expected<void>()> check{};
};

/// Runs the queue's jobs by workers, processes of their own that claim job after job: several that
/// interpret ahead, and one for each device that has something to do. A worker that was killed is
/// noticed at once, and its job recovered. Also looks after retention.
///
///     queue --- bell ---> scheduler ---- starts, waits for ends ----> worker --- claims ---> queue
///
/// The scheduler gives no job to anybody: a worker that lives on without it does no harm.
class Scheduler {
 public:
  /// The queue is not owned and must outlive this.
  Scheduler(JobQueue& queue, ServerSettings settings, WorkerProgram program);
  /// Stops.
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  /// Recovers the jobs of an earlier server, and begins to work on a thread of its own.
  [[nodiscard]] Expected<void> Start();
  /// Ends the workers: each gives its job back. Waits for them.
  void Stop();

 private:
  struct Parts;
  std::unique_ptr<Parts> m_Parts;
};

/// Removes jobs that have ended beyond the limits, the oldest first. `removePages` gets the names
/// of kept pages that no job has any more. Returns how many went.
[[nodiscard]] Expected<int> ApplyRetention(
    JobQueue& queue, const Retention& retention, Time now,
    const std::function<void(const std::string&)>& removePages);

}  // namespace rastrel::server
