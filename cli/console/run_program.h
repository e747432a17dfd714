#pragma once

#include <functional>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// What every program of the command has around its work: reads the arguments, has `run` do what
/// they ask for, tells errors in words or, where the arguments ask for it, as JSON, and gives the
/// exit status of main. What was written and could not be makes the work fail.
[[nodiscard]] int RunProgram(int count, const char* const* words,
                             const std::function<ExitStatus(const Invocation&)>& run);

}  // namespace rastrel::cli
