#pragma once

#include <memory>
#include <string>

#include "server/queue/job_queue.h"

namespace rastrel::cli {

/// The queue of this user's data root. Throws CommandError(NotInstalled) if it can't be had.
[[nodiscard]] std::unique_ptr<server::JobQueue> OpenJobQueue();

/// A job's number as the user gave it. Throws CommandError(WrongUse) for any other text.
[[nodiscard]] server::JobId JobNumber(const std::string& text);

}  // namespace rastrel::cli
