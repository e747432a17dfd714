#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "rastrel/job/status.h"

namespace rastrel::cli {

class JobRecord;

/// The report on a failed job.
struct FailureReport {
  ExitStatus exit = ExitStatus::JobFailed;
  std::string stage;                  ///< the stage in JSON lines, "rip"
  std::string stageName;              ///< the stage for people, "RIP"
  int code = 0;                       ///< JT_ERROR; 0 if the job did not start
  std::string text;                   ///< the fault in one sentence
  std::vector<std::string> messages;  ///< the child's last messages
  std::optional<int> childStatus;     ///< how the child ended; above 128 a signal
  std::string log;                    ///< native path of the application log
  std::string hint;                   ///< a remedy; may be empty
};

/// Makes the report. `selectedPage` is the highest page that was asked for by number, 0
/// if none was, and `pages` how many the job has, 0 if that isn't known.
[[nodiscard]] FailureReport ReportFailure(const JobRecord& record, JT_ERROR error, int selectedPage,
                                          int pages);

/// The report as lines for a person, and as one JSON line.
[[nodiscard]] std::string FailureText(const FailureReport& report);
[[nodiscard]] std::string FailureLine(const FailureReport& report);

}  // namespace rastrel::cli
