#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel queue`: converts a file by the queue program and puts the results into --output, or the
/// working directory. The file itself is only read.
[[nodiscard]] ExitStatus QueueCommand(const Invocation& invocation);

}  // namespace rastrel::cli
