#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"
#include "server/web/http/request.h"
#include "server/web/shop.h"

namespace rastrel::server::web {

/// What a device does, as far as a caller sees its jobs.
struct DeviceState {
  std::optional<Job> job;    ///< that is being delivered to it
  std::int64_t waiting = 0;  ///< jobs that are to come
};

/// Fails if the queue can't be read.
[[nodiscard]] Expected<DeviceState> StateOfDevice(Shop& shop, const Request& request,
                                                  const std::string& name);

}  // namespace rastrel::server::web
