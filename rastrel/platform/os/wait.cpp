#include "rastrel/platform/os/wait.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {
namespace {

constexpr int ReleaseAttempts = 10;

enum class Taken { Yes, Raced, Failed };

// Consumes the signal of a readable handle. A semaphore loses one count, which another waiter may
// have taken first. A process has nothing to take: the kernel refuses to read a pidfd with EINVAL.
Taken TakeSignal(HANDLE handle) {
  std::uint64_t count = 0;
  for (;;) {
    if (Calls().read(handle, &count, sizeof count) >= 0) return Taken::Yes;
    if (errno == EINVAL) return Taken::Yes;
    if (errno == EAGAIN) return Taken::Raced;
    if (errno != EINTR) return Taken::Failed;
  }
}

// How many entries are ready; -1 if that failed.
int PollOn(pollfd* entries, nfds_t count, Deadline deadline = Deadline::Never()) {
  for (;;) {
    const int timeout = deadline.PollTimeout();
    const int ready = Calls().poll(entries, count, timeout);
    if (ready > 0 || (ready < 0 && errno != EINTR)) return ready;
    // A wait of 0 is never interrupted, so it has looked.
    if (ready == 0 && (timeout == 0 || deadline.HasPassed())) return 0;
  }
}

}  // namespace

std::uint32_t WaitForAny(std::span<const HANDLE> handles) {
  if (handles.empty() || handles.size() > WaitLimit) {
    errno = EINVAL;
    return WaitFailed;
  }
  std::array<pollfd, WaitLimit> entries{};
  for (std::size_t index = 0; index < handles.size(); ++index)
    entries[index] = {.fd = handles[index], .events = POLLIN, .revents = 0};
  for (;;) {
    if (PollOn(entries.data(), handles.size()) < 0) return WaitFailed;
    for (std::size_t index = 0; index < handles.size(); ++index) {
      if (entries[index].revents == 0) continue;
      if ((entries[index].revents & POLLNVAL) != 0) {
        errno = EBADF;
        return WaitFailed;
      }
      const Taken taken = TakeSignal(handles[index]);
      if (taken == Taken::Failed) return WaitFailed;
      if (taken == Taken::Yes) return WaitSignaledBase + static_cast<std::uint32_t>(index);
    }
  }
}

std::uint32_t WaitReadable(std::span<const HANDLE> handles, Deadline deadline) {
  if (handles.size() > WaitLimit) {
    errno = EINVAL;
    return WaitFailed;
  }
  std::array<pollfd, WaitLimit> entries{};
  for (std::size_t index = 0; index < handles.size(); ++index)
    entries.at(index) = {.fd = handles[index], .events = POLLIN, .revents = 0};
  if (PollOn(entries.data(), handles.size(), deadline) < 0) return WaitFailed;
  for (std::size_t index = 0; index < handles.size(); ++index)
    if (entries.at(index).revents != 0) return WaitSignaledBase + static_cast<std::uint32_t>(index);
  return WaitTimeout;
}

Expected<HANDLE> CreateSemaphoreHandle(unsigned count) {
  auto semaphore = TakeDescriptor(
      Calls().eventfd(count, EFD_SEMAPHORE | EFD_CLOEXEC | EFD_NONBLOCK), "eventfd", {});
  if (!semaphore) return semaphore.Error();
  return semaphore->Release();
}

// A stop that is not signalled would be waited for without end, so one refusal is not taken for an
// answer.
Expected<void> ReleaseSemaphoreHandle(HANDLE semaphore) {
  const std::uint64_t one = 1;
  for (int refusals = 0; refusals < ReleaseAttempts;) {
    if (Calls().write(semaphore, &one, sizeof one) >= 0) return {};
    if (errno != EINTR) ++refusals;
  }
  return Failure{"write", {}, errno};
}

Expected<void> AcquireSemaphoreHandle(HANDLE semaphore) {
  if (WaitForAny(std::span(&semaphore, 1)) != WaitSignaledBase) return Failure{"wait", {}, errno};
  return {};
}

bool TryAcquireSemaphoreHandle(HANDLE semaphore) { return TakeSignal(semaphore) == Taken::Yes; }

unsigned SemaphoreCount(HANDLE semaphore) {
  pollfd entry{.fd = semaphore, .events = POLLIN, .revents = 0};
  if (Calls().poll(&entry, 1, 0) != 1 || (entry.revents & POLLIN) == 0) return 0;
  // Reading the descriptor would change the count; the kernel has it in this file as well.
  std::ifstream information("/proc/self/fdinfo/" + std::to_string(semaphore));
  const std::string label = "eventfd-count:";
  for (std::string line; std::getline(information, line);)
    if (line.starts_with(label))
      return static_cast<unsigned>(std::strtoull(line.c_str() + label.size(), nullptr, 16));
  return 1;
}

}  // namespace rastrel::os
