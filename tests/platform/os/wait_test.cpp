#include "rastrel/platform/os/wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>
#include <vector>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/error_number.h"

namespace os = rastrel::os;
using rastrel::test::ErrorNumber;

namespace {

class Semaphore {
 public:
  explicit Semaphore(unsigned count)
      : m_Handle(os::CreateSemaphoreHandle(count).ValueOr(INVALID_HANDLE_VALUE)) {}
  ~Semaphore() { os::CloseHandle(m_Handle); }
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;
  [[nodiscard]] HANDLE Get() const { return m_Handle; }

 private:
  HANDLE m_Handle;
};

rastrel::Expected<os::ChildProcess> StartShell(const char* script) {
  return os::Spawn({.executable = "/bin/sh",
                    .arguments = {"sh", "-c", script},
                    .environment = {"PATH=/usr/bin:/bin"}});
}

void EndChild(const os::ChildProcess& child) {
  static_cast<void>(os::Terminate(child.process));
  HANDLE process = child.process;
  os::CloseHandle(process);
}

}  // namespace

TEST(WaitForAny, takes_one_count_of_the_first_signalled_semaphore) {
  const Semaphore empty(0);
  const Semaphore two(2);
  const Semaphore one(1);
  const std::array handles = {empty.Get(), two.Get(), one.Get()};
  EXPECT_EQ(os::WaitForAny(handles), 1U);
  EXPECT_EQ(os::WaitForAny(handles), 1U);
  EXPECT_EQ(os::WaitForAny(handles), 2U);
  for (const HANDLE handle : handles) EXPECT_EQ(os::SemaphoreCount(handle), 0U);
}

TEST(WaitForAny, a_count_that_came_first_is_not_lost) {
  const Semaphore semaphore(0);
  ASSERT_TRUE(os::ReleaseSemaphoreHandle(semaphore.Get()));
  const std::array handles = {semaphore.Get()};
  EXPECT_EQ(os::WaitForAny(handles), 0U);
}

TEST(WaitForAny, wakes_for_a_count_that_comes_later) {
  const Semaphore never(0);
  const Semaphore later(0);
  const std::jthread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(os::ReleaseSemaphoreHandle(later.Get()));
  });
  const std::array handles = {never.Get(), later.Get()};
  EXPECT_EQ(os::WaitForAny(handles), 1U);
}

TEST(WaitForAny, a_process_is_signalled_by_its_end_and_stays_so) {
  const auto child = StartShell("sleep 0.05; exit 9");
  ASSERT_TRUE(child);
  const Semaphore abort(0);
  const std::array handles = {abort.Get(), child->process};
  EXPECT_EQ(os::WaitForAny(handles), 1U);
  EXPECT_EQ(os::WaitForAny(handles), 1U);
  const auto state = os::TakeExitState(child->process);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->status, 9);
  EndChild(*child);
}

TEST(WaitForAny, of_an_abort_and_an_ended_process_the_first_in_the_list_counts) {
  const auto child = StartShell("exit 0");
  ASSERT_TRUE(child);
  const std::array process = {child->process};
  ASSERT_EQ(os::WaitForAny(process), 0U);
  const Semaphore abort(1);
  const std::array abortFirst = {abort.Get(), child->process};
  EXPECT_EQ(os::WaitForAny(abortFirst), 0U);
  EXPECT_EQ(os::WaitForAny(abortFirst), 1U);
  EndChild(*child);
}

TEST(WaitForAny, none_and_too_many_handles_fail) {
  EXPECT_EQ(os::WaitForAny({}), os::WaitFailed);
  EXPECT_EQ(errno, EINVAL);
  const Semaphore one(10);
  std::vector<HANDLE> handles(os::WaitLimit, one.Get());
  EXPECT_EQ(os::WaitForAny(handles), 0U);
  handles.push_back(one.Get());
  EXPECT_EQ(os::WaitForAny(handles), os::WaitFailed);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(os::SemaphoreCount(one.Get()), 9U);
}

TEST(WaitForAny, a_closed_handle_fails) {
  const Semaphore empty(0);
  const int closed = ::dup(0);
  ::close(closed);
  const std::array handles = {empty.Get(), closed};
  EXPECT_EQ(os::WaitForAny(handles), os::WaitFailed);
  EXPECT_EQ(errno, EBADF);
}

TEST(WaitForAny, goes_on_after_an_interruption_and_fails_otherwise) {
  static int calls;
  calls = 0;
  const Semaphore one(1);
  const std::array handles = {one.Get()};
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd* entries, nfds_t count, int milliseconds) {
    if (++calls < 4) {
      errno = EINTR;
      return -1;
    }
    return ::poll(entries, count, milliseconds);
  };
  EXPECT_EQ(os::WaitForAny(handles), 0U);
  EXPECT_EQ(calls, 4);
  os::Calls().poll = [](pollfd*, nfds_t, int) {
    errno = ENOMEM;
    return -1;
  };
  EXPECT_EQ(os::WaitForAny(handles), os::WaitFailed);
  EXPECT_EQ(errno, ENOMEM);
}

TEST(WaitForAny, a_count_that_another_waiter_took_first_is_waited_for_again) {
  static int calls;
  calls = 0;
  const Semaphore one(1);
  const std::array handles = {one.Get()};
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
    if (++calls == 1) {
      errno = EAGAIN;
      return -1;
    }
    return ::read(descriptor, bytes, count);
  };
  EXPECT_EQ(os::WaitForAny(handles), 0U);
  EXPECT_EQ(calls, 2);
}

TEST(WaitForAny, a_failing_read_of_a_semaphore_fails_the_wait) {
  const Semaphore one(1);
  const std::array handles = {one.Get()};
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int, void*, size_t) -> ssize_t {
    errno = EIO;
    return -1;
  };
  EXPECT_EQ(os::WaitForAny(handles), os::WaitFailed);
  EXPECT_EQ(errno, EIO);
  EXPECT_FALSE(os::AcquireSemaphoreHandle(one.Get()));
}

TEST(WaitForAny, every_count_wakes_exactly_one_of_many_waiters) {
  const Semaphore semaphore(0);
  std::atomic<int> woken{0};
  std::vector<std::jthread> waiters;
  for (int count = 0; count < 8; ++count)
    waiters.emplace_back([&] {
      for (int round = 0; round < 100; ++round)
        if (os::AcquireSemaphoreHandle(semaphore.Get())) ++woken;
    });
  for (int count = 0; count < 800; ++count)
    ASSERT_TRUE(os::ReleaseSemaphoreHandle(semaphore.Get()));
  waiters.clear();
  EXPECT_EQ(woken, 800);
  EXPECT_EQ(os::SemaphoreCount(semaphore.Get()), 0U);
}

TEST(CreateSemaphoreHandle, is_closed_on_exec_and_never_standard) {
  const int saved = ::dup(0);
  ::close(0);
  HANDLE handle = os::CreateSemaphoreHandle(3).ValueOr(INVALID_HANDLE_VALUE);
  ::dup2(saved, 0);
  ::close(saved);
  EXPECT_GT(handle, 2);
  EXPECT_EQ(::fcntl(handle, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(os::SemaphoreCount(handle), 3U);
  os::CloseHandle(handle);
}

TEST(CreateSemaphoreHandle, a_system_without_descriptors_is_a_failure) {
  const os::SystemCallsGuard guard;
  os::Calls().eventfd = [](unsigned, int) {
    errno = EMFILE;
    return -1;
  };
  EXPECT_EQ(ErrorNumber(os::CreateSemaphoreHandle(0)), EMFILE);
}

TEST(SemaphoreCount, follows_releases_and_waits) {
  const Semaphore semaphore(0);
  EXPECT_EQ(os::SemaphoreCount(semaphore.Get()), 0U);
  for (int count = 0; count < 20; ++count) ASSERT_TRUE(os::ReleaseSemaphoreHandle(semaphore.Get()));
  EXPECT_EQ(os::SemaphoreCount(semaphore.Get()), 20U);
  EXPECT_TRUE(os::AcquireSemaphoreHandle(semaphore.Get()));
  EXPECT_EQ(os::SemaphoreCount(semaphore.Get()), 19U);
  EXPECT_EQ(os::SemaphoreCount(INVALID_HANDLE_VALUE), 0U);
}

TEST(TryAcquireSemaphoreHandle, takes_a_free_count_and_never_waits) {
  const Semaphore semaphore(1);
  EXPECT_TRUE(os::TryAcquireSemaphoreHandle(semaphore.Get()));
  EXPECT_FALSE(os::TryAcquireSemaphoreHandle(semaphore.Get()));
}

TEST(ReleaseSemaphoreHandle, goes_on_after_an_interruption_and_never_blocks_at_the_top) {
  static int calls;
  calls = 0;
  const Semaphore semaphore(0);
  {
    const os::SystemCallsGuard guard;
    os::Calls().write = [](int descriptor, const void* bytes, size_t count) -> ssize_t {
      if (++calls < 3) {
        errno = EINTR;
        return -1;
      }
      return ::write(descriptor, bytes, count);
    };
    ASSERT_TRUE(os::ReleaseSemaphoreHandle(semaphore.Get()));
  }
  EXPECT_EQ(os::SemaphoreCount(semaphore.Get()), 1U);
  const std::uint64_t nearlyFull = 0xFFFFFFFFFFFFFFFE - 1;
  ASSERT_EQ(::write(semaphore.Get(), &nearlyFull, sizeof nearlyFull), 8);
  EXPECT_FALSE(os::ReleaseSemaphoreHandle(semaphore.Get()));
}
