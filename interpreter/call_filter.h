#pragma once

#include <linux/filter.h>

#include <cstddef>
#include <vector>

namespace rastrel::interpreter {

/// Programs that a confined process may execute, as far as the rules of files permit them.
enum class WallPrograms {
  Any,   ///< as many as it likes
  One,   ///< the next one, once the listener has permitted it, and none after that one
  None,  ///< none
};

/// A filter of system calls (seccomp) that refuses those that no interpreter of files needs and
/// that reach beyond the process: sockets, other processes, mounts, namespaces, the kernel's own
/// affairs, other owners and modes of files. A refused call fails with EPERM; the process goes on.
class CallFilter {
 public:
  /// Makes the filter's program.
  explicit CallFilter(WallPrograms programs);

  /// Sets it in force for the calling thread, for ever, and for all that it executes. System calls
  /// only. Does nothing on a processor for which no filter is known, or where the kernel has none.
  /// Where the kernel has no listeners, WallPrograms::One is Any.
  ///
  /// The result is the listener of WallPrograms::One, an open descriptor of the caller's, which is
  /// closed on exec; else -1. The process's next exec waits until whoever has the listener permits
  /// it (exec_permit.h). Without a listener an exec fails with ENOSYS.
  /// REQUIRES: the process can gain no privileges (PR_SET_NO_NEW_PRIVS).
  int Enter() noexcept;

  /// Whether Enter does anything here.
  [[nodiscard]] static bool IsPossible();

 private:
  void Add(unsigned short code, unsigned value, unsigned char yes = 0, unsigned char no = 0);
  void Load(std::size_t offset);
  void DecideExecs(WallPrograms programs);
  void RefuseCalls();
  // Refuses the call if the comparison (BPF_JEQ, BPF_JSET) of that argument with the value holds.
  void RefuseWhere(unsigned call, unsigned argument, unsigned short comparison, unsigned value);
  void RefuseOnOthers(int call);

  std::vector<sock_filter> m_Program;
  std::vector<std::size_t> m_OwnId;  // instructions whose value is the process's id
  std::vector<std::size_t> m_Asked;  // instructions that return Ask
};

}  // namespace rastrel::interpreter
