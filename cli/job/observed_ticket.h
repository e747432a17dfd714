#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "cli/job/job_event.h"
#include "rastrel/job/vk_job_ticket.h"

namespace PrintingThread {
class CPrintingThread;
}

namespace rastrel::cli {

/// The observers of a ticket's events, and the end of its job. Observers are called under one lock,
/// whatever the thread.
class TicketWatch {
 public:
  TicketWatch() = default;
  TicketWatch(const TicketWatch&) = delete;
  TicketWatch& operator=(const TicketWatch&) = delete;

  /// Adds an observer, which is not owned and must outlive the print. Before PrintJob only.
  void AddObserver(JobObserver* observer) { m_Observers.push_back(observer); }

  /// Has a function change each event before the observers hear of it, under the same lock; they
  /// don't if it returns false. Before PrintJob only.
  void SetFilter(std::function<bool(JobEvent&)> filter) { m_Filter = std::move(filter); }

  /// Waits until the job has ended, whichever way. `thread` is the one that prints it; REQUIRES:
  /// PrintJob was true. `tick` is called every redraw::ForElapsedTime meanwhile, unless it is
  /// empty.
  void WaitForEnd(const PrintingThread::CPrintingThread& thread, const std::function<void()>& tick);
  /// Whether the job reported its end. One that did not has broken off, whatever its error is.
  [[nodiscard]] bool HasReportedEnd();

 protected:
  ~TicketWatch() = default;

  void Notify(JobEvent event);
  /// The job is over.
  void End();

 private:
  std::vector<JobObserver*> m_Observers;
  std::function<bool(JobEvent&)> m_Filter;
  std::mutex m_ObserverMutex;
  std::mutex m_EndMutex;
  std::condition_variable m_Changed;
  bool m_Ended = false;
};

/// A ticket whose events go to observers, and that reports the end of the job. Nothing of it goes
/// to the standard error stream.
template <typename Ticket>
class Observed : public Ticket, public TicketWatch {
 public:
  Observed();
  ~Observed() override;
  Observed(const Observed&) = delete;
  Observed& operator=(const Observed&) = delete;

  using Ticket::Error;
  void Warning(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  void Log(const wchar_t* format, ...) override;
};

extern template class Observed<CJobTicket>;
extern template class Observed<CVKJobTicket>;

using ObservedTicket = Observed<CJobTicket>;
using ObservedPreview = Observed<CVKJobTicket>;

}  // namespace rastrel::cli
