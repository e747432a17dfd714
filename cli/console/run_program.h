#pragma once

#include <functional>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// The frame of every program of the command: parses the arguments, calls `run`, writes a
/// CommandError or any other exception as a message or, with --json, as JSON, and returns the exit
/// status of main. Output that could not be written makes the program fail. If the
/// application log can't be written, one line on standard error says so, in place of the log's
/// texts.
[[nodiscard]] int RunProgram(int count, const char* const* arguments,
                             const std::function<ExitStatus(const Invocation&)>& run);

/// Runs a piece of a program that has no command line of the user's: `run`, with its exception as a
/// message as above. Returns the exit status.
[[nodiscard]] int RunReported(const std::function<ExitStatus()>& run);

}  // namespace rastrel::cli
