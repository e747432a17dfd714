#pragma once

#include <gtest/gtest.h>

#include <csignal>

namespace rastrel::test {

/// Sets the handling of SIGCHLD until the end of the object's life: a host may ignore the signal,
/// or want no zombies.
class ChildSignal {
 public:
  explicit ChildSignal(void (*handler)(int), int flags = 0) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    ::sigaction(SIGCHLD, &action, &m_Old);
  }
  ~ChildSignal() { ::sigaction(SIGCHLD, &m_Old, nullptr); }
  ChildSignal(const ChildSignal&) = delete;
  ChildSignal& operator=(const ChildSignal&) = delete;

 private:
  struct sigaction m_Old {};
};

/// For tests of hosts that leave no child to anybody else.
#if defined(__SANITIZE_THREAD__)
#define REQUIRE_REAPERS() \
  GTEST_SKIP() << "ThreadSanitizer takes a reaper for a fork, so children are started without one"
#else
#define REQUIRE_REAPERS() static_cast<void>(0)
#endif

}  // namespace rastrel::test
