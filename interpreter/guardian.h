#pragma once

#include <sys/types.h>

#include <set>
#include <string>

#include "rastrel/platform/os/expected.h"

/// Keeps a child program's promise to leave nothing half-made on the disk, at whatever moment it is
/// ended. The library ends a child with SIGKILL and waits for the end of its pipes; a program can't
/// tidy up after that signal, so a second process does it in its place.
namespace rastrel::interpreter {

/// A forked process that waits for the end of the one that made it and then clears away all that
/// one has put under guard: process groups are killed, paths are removed with all below them.
///
/// It holds standard error (and standard output, if asked to) open until it has done so. Who reads
/// those pipes to their end therefore finds everything cleared. It ignores the signals by which a
/// terminal or a service manager asks for an end.
///
/// Order of use: start the guardian before anything is made, put a path under guard before it is
/// made, let go of it only when it is whole and wanted. Not thread-safe. Any end of this process
/// counts, whatever its exit status: a path that is to stay must be let go of first.
class Guardian {
 public:
  /// Starts it. REQUIRES: this process has one thread. `holdOutput`: keep standard output open too.
  [[nodiscard]] static Expected<Guardian> Start(bool holdOutput);

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
  Guardian(int descriptor, pid_t process) : m_Descriptor(descriptor), m_Process(process) {}

  int m_Descriptor = -1;
  pid_t m_Process = -1;
  std::set<std::string> m_Paths;  // for the case that the guardian was killed
};

}  // namespace rastrel::interpreter
