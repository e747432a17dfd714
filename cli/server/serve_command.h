#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel serve`: runs the server's parts until SIGINT or SIGTERM. JobFailed if another server of
/// this data root runs.
[[nodiscard]] ExitStatus ServeCommand(const Invocation& invocation);

}  // namespace rastrel::cli
