#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/console/health_check.h"

namespace rastrel::cli {

/// The queue of a data root, whose database is there, and the clock against its jobs. `now` is in
/// milliseconds since 1970-01-01 00:00 UTC. Nothing is changed.
[[nodiscard]] std::vector<HealthCheck> ExamineQueue(const std::string& dataRoot, std::int64_t now);

}  // namespace rastrel::cli
