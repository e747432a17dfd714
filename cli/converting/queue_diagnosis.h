#pragma once

#include <cstddef>
#include <string>
#include <string_view>
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

/// The messages of one run of the queue program, by its lines. For runs at the same time, whose
/// lines in the log are mixed.
class QueueMessages {
 public:
  /// Takes a line of the program.
  void Add(std::wstring_view line);
  /// The last error message; empty if there was none.
  [[nodiscard]] const std::string& LastError() const { return m_LastError; }
  /// The warnings in order, each once; the first thousand.
  [[nodiscard]] const std::vector<std::string>& Warnings() const { return m_Warnings; }

 private:
  std::string m_LastError;
  std::vector<std::string> m_Warnings;
};

/// Writes the warnings of this process's conversions: as lines on standard error or, with `json`,
/// as JSON lines.
void WriteQueueWarnings(bool json);

}  // namespace rastrel::cli
