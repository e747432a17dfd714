#include "cli/job/job_run.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/console/unwritten_file.h"
#include "cli/job/failure_report.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/printing/printing_thread.h"

namespace rastrel::cli {
namespace {

constexpr const char* OutputVariable = "RASTREL_OUTPUT";
constexpr const char* PrinterVariable = "RASTREL_PRINTER";
constexpr const char* AccessVariable = "RASTREL_ACCESS";

int HighestSelected(const CJobTicket& ticket) {
  if (ticket.m_Pages.empty()) return 0;
  return *std::max_element(ticket.m_Pages.begin(), ticket.m_Pages.end()) + 1;
}

void WriteDone(const JobRecord& record, const JobView& view) {
  if (view.IsJson()) {
    JsonLine line("done");
    line.Add("originator", OriginatorWord(JTO_SYSTEM)).Add("exit", 0);
    line.Add("paths", record.Outputs()).Write();
    return;
  }
  for (const std::string& path : record.Outputs()) WriteOutPath(path);
}

void WriteCancelled(const JobRecord& record, const JobView& view) {
  if (view.IsJson()) {
    JsonLine line("cancelled");
    line.Add("code", static_cast<int>(JTE_ABNORMAL)).Add("originator", OriginatorWord(JTO_SYSTEM));
    line.Add("text", "the job was cancelled").Add("exit", static_cast<int>(ExitStatus::Cancelled));
    line.Add("paths", record.Outputs()).Write();
    return;
  }
  WriteErrorLine("rastrel: cancelled; what was unfinished has been removed");
  if (record.Outputs().empty()) return;
  WriteErrorLine("These files were finished before, and stay:");
  for (const std::string& path : record.Outputs()) WriteOutPath(path);
}

}  // namespace

Expected<std::unique_ptr<StopRequest>> StopRequest::Create(JobView* view) {
  std::unique_ptr<StopRequest> request(new StopRequest(view));
  auto signals = TakeStopSignals([made = request.get()](int) { made->OnSignal(); });
  if (!signals) return signals.Error();
  request->m_Signals = *std::move(signals);
  return request;
}

StopRequest::StopRequest(JobView* view) : m_View(view) {}

StopRequest::~StopRequest() = default;

bool StopRequest::IsMade() const {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  return m_Made;
}

void StopRequest::Watch(CJobTicket* ticket) {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Ticket = ticket;
  if (m_Made) m_Ticket->GetPrintThread()->Abort();
}

void StopRequest::Forget() {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Ticket = nullptr;
}

void StopRequest::OnSignal() {
  bool first = false;
  {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    first = !m_Made;
    m_Made = true;
    if (first && m_Ticket != nullptr) m_Ticket->GetPrintThread()->Abort();
  }
  m_View->Say("stopping", first ? "stopping: waiting for the job's programs to end"
                                : "already stopping; the job's programs are being ended");
}

JobEnd RunJob(CJobTicket& ticket, TicketWatch& watch, JobRecord& record, JobView& view,
              StopRequest& stop) {
  if (stop.IsMade()) return JobEnd::Cancelled;
  watch.AddObserver(&record);
  watch.AddObserver(&view);
  if (!ticket.PrintJob()) {
    view.Finish();
    return JobEnd::Failed;
  }
  stop.Watch(&ticket);
  watch.WaitForEnd(*ticket.GetPrintThread(),
                   view.IsLive() ? [&view] { view.Tick(); } : std::function<void()>());
  stop.Forget();
  ticket.EndPrint();
  view.Finish();
  // The library aborts a job by itself, too: when the output engine does not take its input.
  if (ticket.m_Error == JTE_ABNORMAL && stop.IsMade()) return JobEnd::Cancelled;
  return ticket.m_Error == JTE_NONE && watch.HasReportedEnd() ? JobEnd::Done : JobEnd::Failed;
}

ExitStatus ReportEnd(JobEnd end, const CJobTicket& ticket, const JobRecord& record, JobView& view,
                     int pages) {
  if (end == JobEnd::Done) {
    WriteDone(record, view);
    return ExitStatus::Done;
  }
  if (end == JobEnd::Cancelled) {
    WriteCancelled(record, view);
    return ExitStatus::Cancelled;
  }
  const FailureReport report = ReportFailure(record, ticket.m_Error, HighestSelected(ticket),
                                             std::max(pages, record.PagesMade()));
  if (view.IsJson()) {
    WriteOutLines(FailureLine(report));
  } else {
    WriteErrorLines(FailureText(report));
    for (const std::string& path : record.Outputs()) WriteOutPath(path);
  }
  return report.exit;
}

Expected<void> SetUpOutput(const std::string& directory, const std::string& printer) {
  // The engine runs in a directory of its own, so that a relative path would mean another one
  // there.
  std::string output = directory.empty() ? os::EnvironmentValue(OutputVariable) : directory;
  if (!output.empty() && output.front() != '/') output = os::CurrentDirectory() + "/" + output;
  if (!directory.empty()) {
    const std::wstring wide = os::FromNative(output);
    auto there = os::MakePath(wide);
    if (there) there = os::CheckDirectory(wide);
    const std::string fault = "the files can't be put into '" + output + "': ";
    if (!there && IsMachineTrouble(there.Error().error))
      return FailureOf(fault + DescribeError(there.Error().error));
    if (!there)
      return FailureOf(fault + "no such directory, and it can't be made", FailureCode::BadInput);
  }
  if (!output.empty()) static_cast<void>(os::SetEnvironmentValue(OutputVariable, output.c_str()));
  if (!printer.empty())
    static_cast<void>(os::SetEnvironmentValue(PrinterVariable, printer.c_str()));
  return {};
}

void SetUpAccess(unsigned access) {
  std::array<char, 16> text{};
  std::to_chars(text.data(), text.data() + text.size() - 1, access, 8);
  static_cast<void>(os::SetEnvironmentValue(AccessVariable, text.data()));
}

}  // namespace rastrel::cli
