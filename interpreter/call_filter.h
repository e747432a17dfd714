#pragma once

#include <linux/filter.h>

#include <cstddef>
#include <vector>

namespace rastrel::interpreter {

/// A filter of system calls (seccomp) that refuses those that no interpreter of files needs and
/// that reach beyond the process: sockets, other processes, mounts, namespaces, the kernel's own
/// affairs, other owners and modes of files. A refused call fails with EPERM; the process goes on.
///
/// New programs may be executed: those that a confined process may execute are a matter of files.
class CallFilter {
 public:
  /// Makes the filter's program.
  CallFilter();

  /// Sets it in force for the calling thread, for ever, and for all that it executes. System calls
  /// only. Does nothing on a processor for which no filter is known, or where the kernel has none.
  /// REQUIRES: the process can gain no privileges (PR_SET_NO_NEW_PRIVS).
  void Enter() noexcept;

  /// Whether Enter does anything here.
  [[nodiscard]] static bool IsPossible();

 private:
  void Add(unsigned short code, unsigned value, unsigned char yes = 0, unsigned char no = 0);
  void Load(std::size_t offset);
  void RefuseCalls();
  void RefuseNamespaces();
  void RefuseOnOthers(int call);
  void RefuseTerminalInput();

  std::vector<sock_filter> m_Program;
  std::vector<std::size_t> m_OwnId;  // instructions whose value is the process's id
};

}  // namespace rastrel::interpreter
