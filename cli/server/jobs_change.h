#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

/// Commands that change the queue.
namespace rastrel::cli {

/// `rastrel jobs add`: each file becomes a job, after the options and the files were checked.
[[nodiscard]] ExitStatus AddJobsCommand(const Invocation& invocation);
/// `rastrel jobs hold`, `release`, `cancel`, `move`, `priority`, `accept` and `remove`, of each job
/// that is named. One that refuses does not keep the others from it.
[[nodiscard]] ExitStatus ChangeJobsCommand(const Invocation& invocation);
/// `rastrel jobs reprint`.
[[nodiscard]] ExitStatus ReprintJobCommand(const Invocation& invocation);

}  // namespace rastrel::cli
