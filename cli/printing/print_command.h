#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel print`
[[nodiscard]] ExitStatus PrintCommand(const Invocation& invocation);

}  // namespace rastrel::cli
