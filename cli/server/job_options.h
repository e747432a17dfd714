#pragma once

#include "cli/console/options.h"
#include "server/queue/job.h"

namespace rastrel::cli {

/// A job's options as those of `rastrel print`. Throws CommandError(WrongUse) for an option that a
/// print doesn't have.
[[nodiscard]] Invocation InvocationOf(const server::Job& job);

}  // namespace rastrel::cli
