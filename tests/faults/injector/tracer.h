#pragma once

#include <sys/types.h>
#include <sys/user.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/injector/journal.h"

namespace faults {

/// One call of a run. Tasks (processes and threads) are numbered by who started them: "0" is the
/// first one, "0.2" the second that it started, and so on; calls by task and name, from 1. Both
/// stay the same from run to run, however the tasks take turns.
struct CallAddress {
  std::string task;
  std::string name;
  int number = 0;
};

/// A run: the command, the call that fails, and the records that are wanted.
struct Plan {
  std::vector<std::string> command;
  std::string report;             ///< file for Tracer's lines
  std::vector<std::string> ours;  ///< programs below these directories are counted
  std::optional<CallAddress> failing;
  int error = 0;  ///< errno that the failing call has
  bool listCalls = false;
  std::string journal;           ///< file for the changes; empty for none
  std::string changedDirectory;  ///< whose files the journal looks at
  std::chrono::milliseconds limit{20000};
  std::chrono::milliseconds afterEnd{3000};  ///< for processes that outlive the first
};

/// Runs a command with all that it starts, and lets one of its calls fail. Writes to the report,
/// fields parted by tabs:
///
///     call   TASK PROGRAM NAME NUMBER DETAIL   each call, if asked for
///     failed TASK PROGRAM NAME NUMBER DETAIL   the call that was made to fail
///     died   TASK PROGRAM SIGNAL               a process that a signal ended
///     left   TASK PROGRAM                      a process that outlived the first one too long
///     limit                                    the time was up; everything was killed
///     exit   STATUS                            how the first process ended
///     signal NUMBER                            or so
///
/// Calls count from a program's entry point on, so that the dynamic loader's are left out.
class Tracer {
 public:
  explicit Tracer(Plan plan);
  ~Tracer();
  Tracer(const Tracer&) = delete;
  Tracer& operator=(const Tracer&) = delete;

  /// True if the run could be followed to its end, whatever that was.
  [[nodiscard]] bool Run();

 private:
  struct Task {
    std::string id;
    std::string program;
    pid_t process = 0;
    bool counted = false;
    int started = 0;  ///< tasks that this one has started
    std::map<std::string, int, std::less<>> numbers;
    std::optional<std::uint64_t> entryPoint;  ///< where its own code begins, until it is there
    std::uint64_t entryCode = 0;
    std::optional<PendingChange> change;
    std::optional<std::int64_t> forcedResult;
    std::optional<std::uint64_t> firstArgument;  ///< to be put back at the call's end
  };

  bool Start();
  void Follow();
  bool TakeOne();
  void Stopped(pid_t id, int status);
  void HandleEvent(pid_t id, int event);
  void HandleNewTask(pid_t creator, bool thread);
  void HandleExec(pid_t id);
  void HandleCall(pid_t id);
  void HandleCallEnd(pid_t id);
  bool HandleEntry(pid_t id);
  void Ended(pid_t id, int status);
  void GiveUp();
  void KillAll();
  void Resume(pid_t id, int signal);
  void FailCall(Task& task, pid_t id, user_regs_struct registers, const std::string& line);
  [[nodiscard]] bool IsOurs(const std::string& program) const;
  [[nodiscard]] bool IsChosen(const Task& task, std::string_view name, int number) const;

  Plan m_Plan;
  std::ofstream m_Report;
  std::unique_ptr<Journal> m_Journal;
  std::map<pid_t, Task> m_Tasks;
  std::map<pid_t, bool> m_Early;  ///< tasks that stopped before their creator's stop reported them
  pid_t m_First = 0;
  bool m_FirstEnded = false;
  std::chrono::steady_clock::time_point m_Deadline;
};

}  // namespace faults
