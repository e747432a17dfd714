#pragma once

#include <cstddef>
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

/// The last remark of the library on a conversion since this process began, without its mark; empty
/// if there is none. From the same log.
[[nodiscard]] std::string LastRemarkOfLibrary();

/// The queue program's warnings, read from the same log.
class QueueWarnings {
 public:
  /// Those since the last call, or since this process began, in order and each once.
  [[nodiscard]] std::vector<std::string> Take();

 private:
  std::size_t m_Taken = 0;  // bytes of the log
};

/// Writes the warnings of this process's conversions: as lines on standard error or, with `json`, as
/// JSON lines.
void WriteQueueWarnings(bool json);

}  // namespace rastrel::cli
