#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel batch COMMAND`: many files by one of the commands, cut into pieces of work, with a
/// record that lets it go on after a kill. docs/batches.md.
[[nodiscard]] ExitStatus BatchCommand(const Invocation& invocation);

}  // namespace rastrel::cli
