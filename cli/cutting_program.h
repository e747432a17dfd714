#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Whether `rastrel cut` is asked for more than the lines of --cut-color and --half-cut-color: by
/// an option besides those that rastrel-document knows, or by a cut job as its file.
[[nodiscard]] bool WantsCuttingProgram(const Invocation& invocation);

/// Whether `rastrel print` is asked for rules, registration marks or a cutter's file.
[[nodiscard]] bool PrintsByRules(const Invocation& invocation);

/// Runs the program that makes cutters' files in this one's place, with these arguments. It is a
/// program of its own, since the libraries for polygons and colors would make every other command
/// start slower. Returns only by throwing CommandError(NotInstalled).
[[noreturn]] ExitStatus RunCuttingProgram(const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
