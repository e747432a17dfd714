#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Success if the queue program is installed, where CExePaths (rastrel/job/exe_paths.h) looks for
/// it.
[[nodiscard]] Expected<void> CheckQueueProgram();

/// The last error message of the queue program since this process began; empty if there is none. It
/// is read from the application log, where the library writes all messages of that program.
[[nodiscard]] std::string LastErrorOfQueue();

/// The warnings of the queue program since this process began, in their order, the first
/// WarningLimit of them; from the same log. A conversion's dialog shows none.
[[nodiscard]] std::vector<std::string> WarningsOfQueue();
inline constexpr std::size_t WarningLimit = 100;

}  // namespace rastrel::cli
