#pragma once

#include "cli/console/options.h"
#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// The filter that the options name. Throws CommandError(WrongUse) for a value that none may have.
[[nodiscard]] server::JobFilter FilterOf(const Invocation& invocation);

/// A time as local date and time, "2026-03-31 14:05:09"; empty for 0.
[[nodiscard]] std::string TimeText(server::Time time);

}  // namespace rastrel::cli
