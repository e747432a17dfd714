#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// The parameters of a child's start. A standard stream that is 0 or invalid is this process's own.
struct SpawnRequest {
  std::string executable{};  ///< native path; a relative one is taken from this process's directory
  std::vector<std::string> arguments{};    ///< with the program's name as first element
  std::vector<std::string> environment{};  ///< "NAME=value" each
  std::string directory{};                 ///< native working directory; empty: this process's own
  HANDLE standardInput = 0;
  HANDLE standardOutput = 0;
  HANDLE standardError = 0;
};

/// A running child: its descriptor, which becomes readable when it ends, and its id.
struct ChildProcess {
  HANDLE process = INVALID_HANDLE_VALUE;
  std::uint32_t id = 0;
};

/// Starts a program in a session of its own, without a terminal, with default signal handling,
/// nothing masked, and no descriptor of this process but the three. Costs the same whatever memory
/// this process holds. A program that can't be executed is a failure here, with the error number
/// of the exec; no child is left then. The child is not this process's own but that of a reaper
/// (reaper.h), so that its end is to be had whatever the host does with SIGCHLD and with children.
[[nodiscard]] Expected<ChildProcess> Spawn(const SpawnRequest& request);

/// Puts another program in this process's place, with the same environment, directory, terminal and
/// standard streams; other descriptors that are close-on-exec end. Returns only if it can't, with
/// the reason.
[[nodiscard]] Failure ReplaceProcess(const std::string& executable,
                                     const std::vector<std::string>& arguments);

/// How a child ended.
struct ExitState {
  bool running = false;   ///< it has not ended yet; the other fields have no meaning
  bool byItself = false;  ///< it called exit; false if a signal ended it
  int status = 0;         ///< exit status 0 to 255, or the signal's number
};

/// Checks whether the child has ended, and takes its end if so. Does not wait. Other children of
/// the process are left alone. `Failure` if the end is not to be had, for instance because it was
/// taken before.
[[nodiscard]] Expected<ExitState> TakeExitState(HANDLE process);

/// Ends the child at once (SIGKILL), waits for its end and takes it. The result distinguishes a
/// child that had ended by itself before from one that was killed here.
[[nodiscard]] Expected<ExitState> Terminate(HANDLE process);

/// Sends a child a signal, for instance SIGINT. One that has ended gets none, which is no failure.
[[nodiscard]] Expected<void> SendSignal(HANDLE process, int signal);

/// From now on this process gets SIGTERM when the one that started it (StarterProcessId, reaper.h)
/// ends, however that happens. Fails with ESRCH if that is not `starter` any more: it has ended
/// already.
[[nodiscard]] Expected<void> EndWithStarter(std::uint32_t starter);

/// Waits until nothing of the children that have ended is left in this process: the thread of each
/// ends within microseconds. For who closes a child's handle, off the road on which somebody waits
/// for the child's status.
void ReleaseEndedChildren();

/// Whether a process with that id lives and this process may act on it (a signal could be sent).
[[nodiscard]] bool CanOpenProcess(std::uint32_t id);

[[nodiscard]] std::uint32_t CurrentProcessId();

/// The permission bits that this process's umask takes from files that it makes; those of all other
/// users if the system does not say. Does not change it.
[[nodiscard]] unsigned CurrentUmask();
/// The kernel's number of the calling thread.
[[nodiscard]] std::uint32_t CurrentThreadId();

/// The variables of this process's environment, in order, as bytes.
[[nodiscard]] std::vector<std::string> EnvironmentEntries();

}  // namespace rastrel::os
