#include "cli/console/run_program.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <string>
#include <string_view>

#include "cli/console/command_runs.h"
#include "cli/console/error_message.h"
#include "cli/console/standard_streams.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {
namespace {

ExitStatus RunGuarded(bool json, const std::function<ExitStatus()>& run) {
  try {
    return run();
  } catch (const CommandError& error) {
    WriteErrorMessage(error, json);
    return error.Status();
  } catch (const std::exception& error) {
    WriteErrorMessage({ExitStatus::JobFailed, error.what()}, json);
    return ExitStatus::JobFailed;
  }
}

// The log's texts are for engineers, and on a terminal they look like the command's own: one line
// says that they are lost.
void ReportLostLog(std::string_view /*text*/, const Failure& why) {
  static std::atomic<bool> reported = false;
  if (reported.exchange(true)) return;
  WriteErrorLine("note: the application log can't be written: " + Describe(why));
}

}  // namespace

int RunProgram(int count, const char* const* arguments,
               const std::function<ExitStatus(const Invocation&)>& run) {
  CAppLog::SetLostTextHandler(ReportLostLog);
  // An error in the arguments themselves is reported in the form that they ask for, too.
  const bool json = std::any_of(arguments + std::min(count, 1), arguments + count,
                                [](std::string_view word) { return word == "--json"; });
  const ExitStatus status = RunGuarded(json, [&] {
    EndWithCommandRuns();
    return run(ParseArguments(count, arguments));
  });
  if (status == ExitStatus::Done && OutputFailed()) {
    WriteErrorLine("rastrel: standard output could not be written");
    return static_cast<int>(ExitStatus::JobFailed);
  }
  return static_cast<int>(status);
}

int RunReported(const std::function<ExitStatus()>& run) {
  return static_cast<int>(RunGuarded(false, run));
}

}  // namespace rastrel::cli
