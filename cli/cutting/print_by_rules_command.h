#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel print FILE` with --rules, --marks or --cut-output: the page without the paths of the
/// tools, with its marks, through the printer's device, and the file for the cutter, both in one
/// frame and of one interpretation. The cutter's file is written before the print begins. Without
/// any of these options it prints as ever. Throws CommandError.
[[nodiscard]] ExitStatus PrintByRulesCommand(const Invocation& invocation);

}  // namespace rastrel::cli
