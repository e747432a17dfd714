#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Success if the queue program is installed, where CExePaths (rastrel/job/exe_paths.h) looks for
/// it.
[[nodiscard]] Expected<void> CheckQueueProgram();

/// The last error message of the queue program since this process began; empty if there is none. It
/// is read from the application log, where the library writes all messages of that program.
[[nodiscard]] std::string LastErrorOfQueue();

}  // namespace rastrel::cli
