#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel separate`: the planes of a file, one an ink, as a report and as files.
[[nodiscard]] ExitStatus SeparateCommand(const Invocation& invocation);

}  // namespace rastrel::cli
