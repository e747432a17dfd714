#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel nest FILE... --sheet WxH|roll:W -o FILE`: the pieces of the files' cut jobs on sheets
/// or a roll, as one file for each sheet, and a report of which piece lies where. Throws
/// CommandError.
[[nodiscard]] ExitStatus NestCommand(const Invocation& invocation);

/// `rastrel tile FILE --panel WxH -o FILE`: the panels of a large job, as one file each, and a
/// report of their places. Throws CommandError.
[[nodiscard]] ExitStatus TileCommand(const Invocation& invocation);

}  // namespace rastrel::cli
