#pragma once

#include <string>
#include <vector>

#include "server/queue/job_queue.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {

/// Brings finished files of a job that was claimed to a device of the server's settings, and
/// reports the end to the queue. `device` is of any kind but `files`.
[[nodiscard]] Expected<void> DeliverToDevice(server::JobQueue& queue, const server::Job& job,
                                             const server::DeviceSettings& device,
                                             const std::vector<std::string>& files);

}  // namespace rastrel::cli
