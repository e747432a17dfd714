#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// A user's wishes for each task. Empty: as the cluster has it.
struct SlurmWishes {
  std::string partition;
  std::string account;
  std::string timeLimit;  ///< as sbatch reads it: minutes, or HH:MM:SS
  std::string licenses;   ///< "cutter1:1,printer1:1"
  unsigned atOnce = 0;    ///< tasks at the same time; 0: as many as there is room for
};

/// A task of an array as the controller has it.
struct TaskState {
  bool isOver = false;
  bool bySignal = false;
  int status = 0;    ///< once it is over: exit status, or the signal
  std::string name;  ///< of the state, as "TIMEOUT"
};

/// The states of an array's tasks from the controller's rows, "NUMBER STATE WAIT-STATUS" each.
/// Other rows are passed over.
[[nodiscard]] std::map<std::size_t, TaskState> ReadTaskStates(std::string_view rows);

/// The programs by which Slurm is asked: sbatch, squeue and scancel of the user's path. All
/// arguments go as they are, and no shell reads them. Failures are messages for the user.
class SlurmCluster {
 public:
  /// Fails if one of the three is missing. `isStopped` ends a call that is under way, and may be
  /// asked by the thread that calls.
  [[nodiscard]] static Expected<SlurmCluster> Find(SlurmWishes wishes,
                                                   std::function<bool()> isStopped);

  /// Submits tasks 0 to `count` - 1: each runs a command by the script, with its number in the
  /// environment. Returns the id. If it fails, an array of that name may be there all the same.
  [[nodiscard]] Expected<std::string> Submit(const std::string& name, std::size_t count,
                                             const std::string& script,
                                             const std::vector<std::string>& command) const;
  /// Whether a call is ended by `isStopped`, or only by its time limit.
  enum class Call { UntilStop, AfterStop };
  /// All tasks that the controller knows; none if it has forgotten the array.
  [[nodiscard]] Expected<std::map<std::size_t, TaskState>> States(
      const std::string& id, Call call = Call::UntilStop) const;
  /// Ends all tasks of the arrays of that name. One that is not there is no failure. Not ended by
  /// `isStopped`.
  [[nodiscard]] Expected<void> Cancel(const std::string& name) const;

 private:
  SlurmWishes m_Wishes;
  std::function<bool()> m_IsStopped;
  std::string m_Submit;
  std::string m_Queue;
  std::string m_Cancel;
};

}  // namespace rastrel::cli
