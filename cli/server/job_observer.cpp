#include "cli/server/job_observer.h"

#include <algorithm>

#include "cli/console/exit_status.h"
#include "cli/job/failure_report.h"
#include "cli/server/worker.h"
#include "rastrel/printing/printing_thread.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto ProgressInterval = 500ms;
// A child that floods its standard error fills no database.
constexpr int MaximumMessages = 1000;

}  // namespace

void QueueObserver::OnEvent(const JobEvent& event) {
  const auto now = std::chrono::steady_clock::now();
  if (event.kind == JobEventKind::Progress && event.percent && *event.percent != m_Percent &&
      now >= m_NextProgress) {
    m_Percent = *event.percent;
    m_NextProgress = now + ProgressInterval;
    static_cast<void>(m_Queue.SetProgress(m_Id, m_Percent));
  }
  const bool isMessage =
      event.kind == JobEventKind::Warning || (event.kind == JobEventKind::Error && !event.code);
  if (!isMessage || event.text.empty() || m_Messages >= MaximumMessages) return;
  ++m_Messages;
  static_cast<void>(
      m_Queue.AddMessage(m_Id, std::string(OriginatorName(event.originator)) + ": " + event.text));
}

TicketEnd RunTicket(server::JobQueue& queue, const server::Job& job, CJobTicket& ticket,
                    TicketWatch& watch, JobRecord& record) {
  using enum TicketEnd::Kind;
  QueueObserver observer(queue, job.id);
  watch.AddObserver(&record);
  watch.AddObserver(&observer);
  bool canceled = false;
  bool stopped = false;
  if (ticket.PrintJob()) {
    const auto look = [&] {
      const bool asked = queue.IsCancelAsked(job.id).ValueOr(false);
      if ((asked && !canceled) || (IsStopAsked() && !stopped)) ticket.GetPrintThread()->Abort();
      canceled = canceled || asked;
      stopped = stopped || IsStopAsked();
    };
    watch.WaitForEnd(*ticket.GetPrintThread(), look);
    ticket.EndPrint();
    if (ticket.m_Error == JTE_NONE && watch.HasReportedEnd()) return {Done, 0, ""};
    if (ticket.m_Error == JTE_ABNORMAL && (canceled || stopped))
      return {canceled ? Canceled : Stopped, 0, ""};
  }
  const FailureReport report = ReportFailure(record, ticket.m_Error, 0, job.pages);
  std::string message = report.stageName + " failed: " + report.text;
  for (const std::string& line : report.messages) message += "; " + line;
  return {Failed, static_cast<int>(report.exit), message};
}

Expected<void> ReportUndone(server::JobQueue& queue, const server::Job& job, const TicketEnd& end) {
  switch (end.kind) {
    case TicketEnd::Kind::Canceled: return queue.SetCanceled(job.id);
    case TicketEnd::Kind::Failed: return queue.SetFailed(job.id, end.result, end.message);
    case TicketEnd::Kind::Stopped:
    case TicketEnd::Kind::Done: break;
  }
  return {};
}

}  // namespace rastrel::cli
