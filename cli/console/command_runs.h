#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/handle.h"

namespace rastrel::os {
class StopSignals;
}

/// Commands whose work belongs to a process, since it sets the process's environment or has its
/// host: of several files each is a run of this program.
namespace rastrel::cli {

/// Runs of this program with other arguments. The signals that ask for an end go on to all that
/// run, and let none follow. If this process ends without having waited for them, they get SIGTERM.
class CommandRuns {
 public:
  /// Begins to take signals. The failure is a message for the user. REQUIRES: no other thread runs
  /// yet.
  [[nodiscard]] static Expected<std::unique_ptr<CommandRuns>> Create();
  ~CommandRuns();
  CommandRuns(const CommandRuns&) = delete;
  CommandRuns& operator=(const CommandRuns&) = delete;

  /// Whether a signal has come.
  [[nodiscard]] bool IsStopped() const;

  /// Runs it to its end, with the arguments after the program's name. Its lines are written by this
  /// thread (standard_streams.h), each whole. Its standard input is this process's own or empty.
  /// Returns its exit status; Cancelled if a signal has come before its beginning. Fails with a
  /// message for the user if it can't be started, or ends by a signal of its own. Any thread.
  [[nodiscard]] Expected<ExitStatus> Run(const std::vector<std::string>& arguments,
                                         bool readsStandardInput);

 private:
  CommandRuns();
  void OnSignal(int signal);
  void Add(HANDLE process);
  void Remove(HANDLE process);

  mutable std::mutex m_Mutex;
  int m_Signal = 0;  // the last one that came
  std::set<HANDLE> m_Running;
  std::unique_ptr<os::StopSignals> m_Signals;  // last: its thread uses the others
};

/// This process's environment for a program of the installation that is to end with this process:
/// every one that begins with RunProgram does.
[[nodiscard]] std::vector<std::string> EnvironmentOfRun();

/// In a program that CommandRuns started: ends it with that one. Else it does nothing. REQUIRES: no
/// other thread runs yet.
void EndWithCommandRuns();

/// Whether this program is a run of CommandRuns: one of several, whose steps nobody follows.
[[nodiscard]] bool IsOneOfSeveral();

/// Runs the invocation's command for each of its operands, so many at a time, in order of the
/// operands (files_at_once.h). `begin` writes the lines that come before those of a file. The run
/// has the options that were given but --jobs and those of `without`; --title goes to the run of
/// standard input alone. Returns the status of the first file that has another one than Done, or
/// Cancelled if a signal has come.
[[nodiscard]] ExitStatus RunFileByFile(const Invocation& invocation,
                                       std::span<const OptionId> without,
                                       const std::function<void(const std::string& file)>& begin);

}  // namespace rastrel::cli
