#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/queue/job.h"

namespace rastrel::server {

/// When a day begins here, `later` (0 or 1) days after the one that a text names as YYYY-MM-DD.
/// The failure is a reason alone.
[[nodiscard]] Expected<Time> BeginOfDay(const std::string& text, int later);

}  // namespace rastrel::server
