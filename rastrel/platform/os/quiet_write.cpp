#include "rastrel/platform/os/quiet_write.h"

#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {
namespace {

// Keeps SIGPIPE from this thread. The kernel sends it to the writing thread alone, so that one
// thread's mask is enough and the host's handler is left as it is.
class BrokenPipeGuard {
 public:
  BrokenPipeGuard() {
    sigemptyset(&m_BrokenPipe);
    sigaddset(&m_BrokenPipe, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    m_WasPending = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &m_BrokenPipe, &m_Saved);
  }
  ~BrokenPipeGuard() { pthread_sigmask(SIG_SETMASK, &m_Saved, nullptr); }
  BrokenPipeGuard(const BrokenPipeGuard&) = delete;
  BrokenPipeGuard& operator=(const BrokenPipeGuard&) = delete;

  // Takes the signal of a write that just failed with EPIPE off this thread.
  void TakeSignal() const {
    if (m_WasPending) return;
    const std::timespec atOnce{};
    while (sigtimedwait(&m_BrokenPipe, nullptr, &atOnce) < 0 && errno == EINTR) {
    }
  }

 private:
  sigset_t m_BrokenPipe{};
  sigset_t m_Saved{};
  bool m_WasPending = false;
};

}  // namespace

ssize_t WriteWithoutSignal(int descriptor, const void* bytes, std::size_t count) {
  const BrokenPipeGuard guard;
  ssize_t written;
  do {
    written = Calls().write(descriptor, bytes, count);
  } while (written < 0 && errno == EINTR);
  if (written < 0 && errno == EPIPE) {
    guard.TakeSignal();
    errno = EPIPE;
  }
  return written;
}

}  // namespace rastrel::os
