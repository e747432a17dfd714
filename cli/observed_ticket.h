#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "cli/job_event.h"
#include "rastrel/job/job_ticket.h"

namespace rastrel::cli {

/// A ticket whose events go to observers, and that tells when the job has ended. Nothing of it goes
/// to the standard error stream. Observers are called under one lock, whatever the thread.
class ObservedTicket : public CJobTicket {
 public:
  ObservedTicket();
  ~ObservedTicket() override;
  ObservedTicket(const ObservedTicket&) = delete;
  ObservedTicket& operator=(const ObservedTicket&) = delete;

  /// Adds an observer, which is not owned and must outlive the print. Before PrintJob only.
  void AddObserver(JobObserver* observer) { m_Observers.push_back(observer); }

  /// Waits until the job has ended, whichever way. REQUIRES: PrintJob was true. `tick` is called
  /// between whiles, five times a second, unless it is empty.
  void WaitForEnd(const std::function<void()>& tick);
  /// Whether the job told its end. One that did not has broken off, whatever its error says.
  [[nodiscard]] bool HasReportedEnd();

  using CJobTicket::Error;
  void Warning(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  void Log(const wchar_t* format, ...) override;

 private:
  void Tell(const JobEvent& event);

  std::vector<JobObserver*> m_Observers;
  std::mutex m_ObserverMutex;
  std::mutex m_EndMutex;
  std::condition_variable m_Changed;
  bool m_Ended = false;
};

}  // namespace rastrel::cli
