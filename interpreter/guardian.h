#pragma once

#include <sys/types.h>

#include <set>
#include <string>

#include "interpreter/guardian_watch.h"
#include "rastrel/platform/os/expected.h"

/// Keeps a program's promise to leave nothing half-made on the disk and no process, at whatever
/// moment it is ended. The library ends a child with SIGKILL and waits for the end of its pipes; a
/// person ends a command in the same way. A program can't tidy up after that signal, so a second
/// process does it in its place.
namespace rastrel::interpreter {

/// A forked process that waits for the end of the one that made it and then clears away all that
/// one has put under guard: process groups are killed, paths are removed with all below them.
///
/// It is in a session of its own, and no signal ends it but SIGKILL. Of the descriptors of this
/// process it keeps none but the standard streams that HeldStreams names.
///
/// Order of use: start the guardian before anything is made, put a path under guard before it is
/// made, let go of it only when it is whole and wanted. Any thread of any process may start one,
/// and each is used by one thread at a time, but for process groups: any thread may put one under
/// guard and let go of it. Any end of this process counts, whatever its exit status: a path that is
/// to stay must be let go of first.
class Guardian {
 public:
  /// Starts it. A host's handlers and masks of signals stay as they are.
  [[nodiscard]] static Expected<Guardian> Start(HeldStreams held);

  /// Clears away all that is still under guard and returns when that is done.
  ~Guardian();
  Guardian(Guardian&& other) noexcept;
  Guardian& operator=(Guardian&& other) = delete;
  Guardian(const Guardian&) = delete;
  Guardian& operator=(const Guardian&) = delete;

  /// Puts a file or directory under guard, existing or not, by its absolute native path. False if
  /// the guardian is gone or the path is too long: don't make the thing then.
  [[nodiscard]] bool Guard(const std::string& path);
  /// Lets go of a path; it stays from now on. False if the guardian is gone.
  [[nodiscard]] bool Release(const std::string& path);
  /// Lets go of every path: the very last act of a run that went well. Process groups stay guarded.
  [[nodiscard]] bool ReleaseAll();

  /// Puts a process group under guard by its leader's id. A child can call the second form between
  /// fork and exec, which leaves no moment in which the guardian doesn't know of it.
  [[nodiscard]] bool GuardGroup(pid_t leader);
  [[nodiscard]] static bool GuardGroup(int guardianDescriptor, pid_t leader) noexcept;
  /// Lets go of a process group. Call it when the leader has ended and before it is waited for,
  /// since afterwards its number may belong to another.
  [[nodiscard]] bool ReleaseGroup(pid_t leader);

  /// The descriptor that goes to the guardian; close-on-exec. A copy in another process puts off
  /// the moment at which the guardian sees the end of this one.
  [[nodiscard]] int Descriptor() const { return m_Descriptor; }

 private:
  Guardian(int descriptor, pid_t process, HeldStreams held)
      : m_Descriptor(descriptor), m_Process(process), m_Held(held) {}

  int m_Descriptor = -1;
  pid_t m_Process = -1;
  HeldStreams m_Held;
  std::set<std::string> m_Paths;  // for the case that the guardian was killed
};

}  // namespace rastrel::interpreter
