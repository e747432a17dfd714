#include "cli/job/failure_report.h"

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/job/job_event.h"
#include "cli/job/job_record.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/job_code_text.h"
#include "rastrel/job/log_cleanup.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/program_search.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::cli {
namespace {

constexpr int SignalBase = 128;
constexpr int RipPartMissing = 3;  // the RIP's own exit status for a part that is missing
constexpr const char* DoctorHint = "`rastrel doctor` tells what is missing and how to mend it";

std::string LogPath() {
  const std::wstring name = job::LogNamePrefix + std::to_wstring(os::CurrentProcessId()) + L".log";
  return os::ToNative(CExePaths::Instance().m_RipDir + name);
}

// Texts for errors whose own text says less than the record.
std::string TextOf(JT_ERROR error, const FailureReport& report, int selectedPage, int pages) {
  if (error == JTE_SPOOL_GENERATE && pages > 0 && selectedPage > pages)
    return "page " + std::to_string(selectedPage) + " was asked for, and the job has " +
           std::to_string(pages);
  if (error == JTE_NONE) return "the system gives no thread or semaphore for it";
  if (error == JTE_ABNORMAL) return "it ended before it had taken the list of pages";
  const bool known =
      error < JT_FIRST_CHILD_CODE || error == JTE_RUN_INSTALL || error == JTE_INVALID_RECOVERY;
  if (known) return ShownText(job::ErrorText(error));
  if (!report.messages.empty()) return report.messages.front();
  return "it ended with an error and said nothing";
}

void AddHint(JT_ERROR error, FailureReport& report) {
  const bool missing = error == JTE_RIP_MISSING || error == JTE_ODALIS_MISSING;
  const bool noStart = error == JTE_START_RIP || error == JTE_START_ODALIS;
  const bool noInterpreter = error == JTE_RIP_STATUS_3 && report.childStatus == RipPartMissing &&
                             os::FindProgram("gs").empty();
  if (missing || noInterpreter) report.exit = ExitStatus::NotInstalled;
  if (noInterpreter) report.text = "Ghostscript (gs) is not on the path";
  if (missing || noStart || noInterpreter) report.hint = DoctorHint;
}

std::string StatusText(int status) {
  if (status <= SignalBase) return std::to_string(status);
  return std::to_string(status) + " (ended by signal " + std::to_string(status - SignalBase) + ")";
}

}  // namespace

FailureReport ReportFailure(const JobRecord& record, JT_ERROR error, int selectedPage, int pages) {
  FailureReport report;
  const JobStage stage = record.StageOf(error);
  report.stage = StageWord(stage);
  report.stageName = StageName(stage);
  report.code = error;
  if (const ChildRecord* child = record.ChildOf(stage)) {
    report.messages = child->LastMessages();
    report.childStatus = child->exitStatus;
  }
  report.text = TextOf(error, report, selectedPage, pages);
  report.log = LogPath();
  AddHint(error, report);
  return report;
}

std::string FailureText(const FailureReport& report) {
  const auto clean = [](const std::string& part) { return os::CleanLine(part); };
  std::string text = "rastrel: " + report.stageName + " failed: " + clean(report.text) + "\n";
  for (const std::string& message : report.messages)
    if (message != report.text) text += "  it said: " + clean(message) + "\n";
  if (report.childStatus) text += "  its exit status: " + StatusText(*report.childStatus) + "\n";
  if (report.code != 0) text += "  error code: " + std::to_string(report.code) + "\n";
  if (!report.log.empty()) text += "  log: " + clean(report.log) + "\n";
  if (!report.hint.empty()) text += "  " + report.hint + "\n";
  return text;
}

std::string FailureLine(const FailureReport& report) {
  JsonLine line("failed");
  if (report.code != 0) line.Add("code", report.code);
  line.Add("originator", OriginatorWord(JTO_SYSTEM)).Add("text", report.text);
  line.Add("exit", static_cast<int>(report.exit)).Add("stage", report.stage);
  if (!report.messages.empty()) line.Add("words", report.messages);
  if (report.childStatus) line.Add("status", *report.childStatus);
  line.AddIfAny("path", report.log).AddIfAny("hint", report.hint);
  return line.Text();
}

}  // namespace rastrel::cli
