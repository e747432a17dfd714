#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

/// Commands that look at the queue.
namespace rastrel::cli {

/// `rastrel jobs list`: a row or a JSON line for each job.
[[nodiscard]] ExitStatus ListJobsCommand(const Invocation& invocation);
/// `rastrel jobs show`: all that is known of a job, and its story. BadInput if there is none.
[[nodiscard]] ExitStatus ShowJobCommand(const Invocation& invocation);
/// `rastrel jobs export`: RFC 4180, to a file or to standard output. A cell that a spreadsheet
/// would take for a formula begins with an apostrophe.
[[nodiscard]] ExitStatus ExportJobsCommand(const Invocation& invocation);

}  // namespace rastrel::cli
