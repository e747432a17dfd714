#pragma once

#include "cli/console/options.h"
#include "server/queue/job.h"

namespace rastrel::cli {

/// A job's options as those of `rastrel print`; those that only make the pages of a merge are
/// passed over. Throws CommandError(WrongUse) for an option that a print doesn't have.
[[nodiscard]] Invocation InvocationOf(const server::Job& job);

/// Checks the values of a print's options by the code that reads them when the job runs. Throws
/// CommandError(WrongUse) for the first that is wrong.
void CheckPrintOptions(const Invocation& invocation);

}  // namespace rastrel::cli
