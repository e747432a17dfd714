#pragma once

#include <string>

namespace rastrel::cli {

/// Throws CommandError(NotInstalled) if there is no queue program.
void CheckQueueProgram();

/// The last error that the queue program has told since this process began, as it said it; empty if
/// there is none. It stands in the application log, where the library puts all that it says.
[[nodiscard]] std::string LastErrorOfQueue();

}  // namespace rastrel::cli
