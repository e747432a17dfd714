#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/job/job_record.h"
#include "cli/job/job_view.h"
#include "cli/job/observed_ticket.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::os {
class StopSignals;
}

namespace rastrel::cli {

/// Ends a job at a signal that asks for it: the first one aborts it, further ones are answered with
/// a message that this is under way.
class StopRequest {
 public:
  /// Begins to take signals. The view is not owned and must outlive this. The failure is a message
  /// for the user. REQUIRES: no other thread runs yet.
  [[nodiscard]] static Expected<std::unique_ptr<StopRequest>> Create(JobView* view);
  ~StopRequest();
  StopRequest(const StopRequest&) = delete;
  StopRequest& operator=(const StopRequest&) = delete;

  /// Whether a signal has come.
  [[nodiscard]] bool IsMade() const;
  /// From now on a request aborts this ticket's print; one that was made before does so at once.
  /// REQUIRES: it has a printing thread until Forget.
  void Watch(CJobTicket* ticket);
  /// The print is over.
  void Forget();

 private:
  explicit StopRequest(JobView* view);
  void OnSignal();

  JobView* m_View;
  mutable std::mutex m_Mutex;
  CJobTicket* m_Ticket = nullptr;
  bool m_Made = false;
  std::unique_ptr<os::StopSignals> m_Signals;  // last: its thread uses the others
};

/// How a job ended.
enum class JobEnd { Done, Failed, Cancelled };

/// Prints the ticket, which `watch` is a part of, and waits for its end. Observers are added here.
[[nodiscard]] JobEnd RunJob(CJobTicket& ticket, TicketWatch& watch, JobRecord& record,
                            JobView& view, StopRequest& stop);
template <typename Ticket>
[[nodiscard]] JobEnd RunJob(Observed<Ticket>& ticket, JobRecord& record, JobView& view,
                            StopRequest& stop) {
  return RunJob(ticket, ticket, record, view, stop);
}

/// Reports the end of a job and returns the command's status. `pages` is how many pages the job
/// has, 0 if only the record knows.
[[nodiscard]] ExitStatus ReportEnd(JobEnd end, const CJobTicket& ticket, const JobRecord& record,
                                   JobView& view, int pages);

/// Gives the RIP the permission bits that the job's output gets, since the job that it is handed is
/// a private copy. REQUIRES: no job runs.
void SetUpAccess(unsigned access);

/// Makes the environment of the output engine: where files go, and the printer. Empty texts leave
/// it as it is. Fails with a message for the user if the directory can't be made: with BadInput,
/// unless the machine fails.
[[nodiscard]] Expected<void> SetUpOutput(const std::string& directory, const std::string& printer);

}  // namespace rastrel::cli
