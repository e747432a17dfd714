#pragma once

#include <memory>
#include <string>

#include "server/queue/job_queue.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {

/// The queue of this user's data root. Throws CommandError: NotInstalled if it can't be
/// had, and WrongUse for settings with a fault.
[[nodiscard]] std::unique_ptr<server::JobQueue> OpenJobQueue();

/// The policy that the server's settings make.
[[nodiscard]] server::QueuePolicy PolicyOf(const server::ServerSettings& settings);

/// A job's number as the user gave it. Throws CommandError(WrongUse) for any other text.
[[nodiscard]] server::JobId JobNumber(const std::string& text);

}  // namespace rastrel::cli
