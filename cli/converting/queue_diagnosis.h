#pragma once

#include <string>

namespace rastrel::cli {

/// Throws CommandError(NotInstalled) if there is no queue program.
void CheckQueueProgram();

/// The last error message of the queue program since this process began; empty if there is none. It
/// is read from the application log, where the library writes all messages of that program.
[[nodiscard]] std::string LastErrorOfQueue();

}  // namespace rastrel::cli
