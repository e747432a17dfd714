#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include "rastrel/platform/os/process.h"

namespace rastrel::test {

/// Whether this process has any child, a zombie included.
inline bool HasChildren() {
  siginfo_t information{};
  return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT | __WALL) == 0;
}

/// Waits for the end of children that the library was kept from ending, or whose end it was kept
/// from taking. Their reapers take it; without any, they are this process's own.
inline void AwaitLeftChildren() {
  for (int rounds = 0; HasChildren() && rounds < 30'000; ++rounds) {
#if defined(__SANITIZE_THREAD__)
    ::waitpid(-1, nullptr, WNOHANG);
#endif
    ::usleep(1000);
  }
  os::ReleaseEndedChildren();
}

}  // namespace rastrel::test
