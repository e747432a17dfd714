#include "cli/job/observed_ticket.h"

#include "cli/job/redraw_intervals.h"

#include <chrono>
#include <cstdarg>

#include "rastrel/job/job_code_text.h"
#include "rastrel/job/printf_text.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/printing/printing_thread.h"

namespace rastrel::cli {
namespace {

// The ticket writes the texts of its states into the job log as well. Set on a thread while it does
// so, since those texts are events already.
thread_local bool t_InReport = false;

class ReportScope {
 public:
  ReportScope() { t_InReport = true; }
  ~ReportScope() { t_InReport = false; }
  ReportScope(const ReportScope&) = delete;
  ReportScope& operator=(const ReportScope&) = delete;
};

void DropLine(const wchar_t* /*line*/) {}

// These have no text of their own: the child said why before it ended, and the report at the end
// has both.
bool IsExitStatus(JT_ERROR code) { return code >= JTE_RIP_STATUS_1 && code <= JTE_ODALIS_STATUS_2; }

JobEvent TextEvent(JobEventKind kind, const wchar_t* text, JT_ORIGINATOR originator) {
  JobEvent event;
  event.kind = kind;
  event.originator = originator;
  event.text = ShownText(text == nullptr ? L"" : text);
  return event;
}

JobEvent CodeEvent(JobEventKind kind, int code, const std::wstring& text,
                   JT_ORIGINATOR originator) {
  JobEvent event = TextEvent(kind, text.c_str(), originator);
  event.code = code;
  return event;
}

}  // namespace

void TicketWatch::WaitForEnd(const PrintingThread::CPrintingThread& thread,
                             const std::function<void()>& tick) {
  std::unique_lock<std::mutex> lock(m_EndMutex);
  const auto ended = [&] { return m_Ended || thread.HasEnded(); };
  while (!m_Changed.wait_for(lock, redraw::ForElapsedTime, ended)) {
    lock.unlock();
    if (tick) tick();
    lock.lock();
  }
}

bool TicketWatch::HasReportedEnd() {
  const std::lock_guard<std::mutex> guard(m_EndMutex);
  return m_Ended;
}

void TicketWatch::Notify(JobEvent event) {
  const std::lock_guard<std::mutex> guard(m_ObserverMutex);
  if (m_Filter && !m_Filter(event)) return;
  for (JobObserver* observer : m_Observers) observer->OnEvent(event);
}

void TicketWatch::End() {
  const std::lock_guard<std::mutex> guard(m_EndMutex);
  m_Ended = true;
  m_Changed.notify_all();
}

template <typename Ticket>
Observed<Ticket>::Observed() {
  this->OpenLog(DropLine);
}

// The thread calls the operations below, so it must be over before this part of the object is gone.
template <typename Ticket>
Observed<Ticket>::~Observed() {
  this->EndPrint();
}

template <typename Ticket>
void Observed<Ticket>::Warning(const wchar_t* text, JT_ORIGINATOR originator) {
  Ticket::Warning(text, originator);
  Notify(TextEvent(JobEventKind::Warning, text, originator));
}

template <typename Ticket>
void Observed<Ticket>::Error(const wchar_t* text, JT_ORIGINATOR originator) {
  Ticket::Error(text, originator);
  Notify(TextEvent(JobEventKind::Error, text, originator));
}

template <typename Ticket>
void Observed<Ticket>::Error(JT_ERROR code, JT_ORIGINATOR originator) {
  {
    const ReportScope scope;
    Ticket::Error(code, originator);
  }
  if (IsExitStatus(code)) return;
  Notify(CodeEvent(JobEventKind::Error, code, job::ErrorText(code), originator));
}

template <typename Ticket>
void Observed<Ticket>::Info(JT_INFO code, JT_ORIGINATOR originator) {
  {
    const ReportScope scope;
    Ticket::Info(code, originator);
  }
  Notify(CodeEvent(JobEventKind::State, code, job::InfoText(code, originator), originator));
  if (code == JTI_PROCESSING_COMPLETED || code == JTI_PRINTING_ABORTED) End();
}

template <typename Ticket>
void Observed<Ticket>::Progress(unsigned short percent, JT_ORIGINATOR originator) {
  Ticket::Progress(percent, originator);
  if (percent == 0) return;
  JobEvent event;
  event.kind = JobEventKind::Progress;
  event.originator = originator;
  event.percent = percent > 100 ? 100 : percent;
  Notify(event);
}

template <typename Ticket>
void Observed<Ticket>::Log(const wchar_t* format, ...) {
  std::va_list list;
  va_start(list, format);
  const std::wstring line = job::FormatVariableList(format, list);
  va_end(list);
  Ticket::Log(L"%s", line.c_str());
  if (t_InReport) return;
  if (const auto event = EventOfLogLine(line)) Notify(*event);
}

template class Observed<CJobTicket>;
template class Observed<CVKJobTicket>;

}  // namespace rastrel::cli
