#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "interpreter/guardian.h"
#include "interpreter/wall.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

/// Programs of others, which must not outlive the one that starts them, and which work within walls
/// (wall.h).
namespace rastrel::interpreter {

/// The start of one program.
struct ProcessRequest {
  std::string executable;                ///< native path
  std::vector<std::string> arguments;    ///< with the program's name as first element
  std::vector<std::string> environment;  ///< "NAME=value" each; nothing else is passed on
  std::string directory;                 ///< native working directory; empty: this process's own
  /// The element at n becomes the program's descriptor n; -1 means /dev/null. No other
  /// descriptor is passed on. They stay this process's own.
  std::vector<int> descriptors;
  WallRequest wall{};  ///< its limits, and the files that it may reach
};

/// How a program ended.
struct ProcessEnd {
  bool byItself = false;  ///< it called exit; false if a signal ended it
  int status = 0;         ///< exit status, or the signal's number
};

/// A running program, in a session and process group of its own that is under guard from before
/// its first instruction: when this process dies at any moment, so does it.
///
/// Any thread of any process may start one. The thread that does has to live as long as the
/// program: the program is killed when that thread ends.
class GuardedProcess {
 public:
  /// Starts it, with default signal handling and nothing masked. A program that can't be executed
  /// is a failure with the exec's error number.
  [[nodiscard]] static Expected<GuardedProcess> Start(const ProcessRequest& request,
                                                      Guardian& guardian);
  /// The process of a warm interpreter's job (warm_start.h), which is under guard already and was
  /// given leave to begin. `connection` is the one to it. The process ends when the last copy of
  /// `lifetime` is closed, so also with this process.
  [[nodiscard]] static GuardedProcess OfWarm(pid_t process, os::FileDescriptor descriptor,
                                             os::FileDescriptor connection,
                                             os::FileDescriptor lifetime, Guardian& guardian);
  /// Kills the group if it still runs, and waits for its end.
  ~GuardedProcess();
  GuardedProcess(GuardedProcess&& other) noexcept;
  GuardedProcess& operator=(GuardedProcess&&) = delete;
  GuardedProcess(const GuardedProcess&) = delete;
  GuardedProcess& operator=(const GuardedProcess&) = delete;

  /// Becomes readable when the program has ended. Owned by this object.
  [[nodiscard]] int Descriptor() const { return m_Descriptor.Get(); }
  /// Its number, which is its own until Wait() has returned.
  [[nodiscard]] pid_t Number() const { return m_Process; }
  /// Sends SIGKILL to the whole group.
  void Kill();
  /// Has the whole group rest, or go on.
  void Pause() const;
  void Resume() const;
  /// Waits for the end without a limit and takes it over. Later calls return the same. Fails if
  /// other code of this process has taken the end over.
  [[nodiscard]] Expected<ProcessEnd> Wait();
  /// Whether a warm interpreter has started it.
  [[nodiscard]] bool IsWarm() const { return m_Connection.IsOpen(); }

 private:
  GuardedProcess(pid_t process, int descriptor, Guardian& guardian)
      : m_Process(process), m_Descriptor(descriptor), m_Guardian(&guardian) {}
  [[nodiscard]] Expected<ProcessEnd> WaitForWarm();

  pid_t m_Process;
  os::FileDescriptor m_Descriptor;
  os::FileDescriptor m_Connection;  // to a warm interpreter, whose child the process is
  os::FileDescriptor m_Lifetime;    // of that process: a pipe's writing end
  Guardian* m_Guardian;
  Expected<ProcessEnd> m_End{ProcessEnd{}};
};

}  // namespace rastrel::interpreter
