#pragma once

#include <chrono>
#include <string>

#include "cli/job/job_event.h"
#include "cli/job/job_record.h"
#include "cli/job/observed_ticket.h"
#include "rastrel/job/job_ticket.h"
#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// Brings the events of a ticket to the queue: its progress, now and then, and its children's
/// messages. A failure of the queue is passed over: the job's end is reported all the same.
class QueueObserver : public JobObserver {
 public:
  /// Neither is owned; both outlive this.
  QueueObserver(server::JobQueue& queue, server::JobId id) : m_Queue(queue), m_Id(id) {}
  void OnEvent(const JobEvent& event) override;

 private:
  server::JobQueue& m_Queue;
  server::JobId m_Id;
  int m_Percent = 0;
  int m_Messages = 0;
  std::chrono::steady_clock::time_point m_NextProgress{};
};

/// How a ticket's run ended.
struct TicketEnd {
  enum class Kind { Done, Failed, Canceled, Stopped };
  Kind kind = Kind::Failed;
  int result = 0;       ///< of Failed: exit status as the command's
  std::string message;  ///< of Failed: one line
};

/// Prints a ticket for a job, and waits for its end. Aborts it when a person canceled the job, or
/// the server stops. `record` has the delivered files and pages afterwards.
[[nodiscard]] TicketEnd RunTicket(server::JobQueue& queue, const server::Job& job,
                                  CJobTicket& ticket, TicketWatch& watch, JobRecord& record);

/// Reports an end that is not Done to the queue. A job whose worker stops stays claimed: the server
/// finds the claim's process gone, and gives the job to another.
[[nodiscard]] Expected<void> ReportUndone(server::JobQueue& queue, const server::Job& job,
                                          const TicketEnd& end);

}  // namespace rastrel::cli
