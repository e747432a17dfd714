#include "rastrel/platform/os/deadline.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <functional>
#include <vector>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;
using namespace std::chrono_literals;

namespace {

class EmptySemaphore {
 public:
  ~EmptySemaphore() { os::CloseHandle(m_Handle); }
  [[nodiscard]] std::array<HANDLE, 1> Handles() const { return {m_Handle}; }

 private:
  HANDLE m_Handle = *os::CreateSemaphoreHandle(0);
};

TEST(Deadline, that_never_comes_waits_without_a_limit) {
  EXPECT_FALSE(os::Deadline::Never().HasPassed());
  EXPECT_EQ(os::Deadline::Never().PollTimeout(), -1);
}

TEST(Deadline, that_has_come_waits_no_more) {
  for (const auto time : {0ms, -5ms}) {
    EXPECT_TRUE(os::Deadline::After(time).HasPassed());
    EXPECT_EQ(os::Deadline::After(time).PollTimeout(), 0);
  }
}

TEST(Deadline, rounds_the_rest_of_its_time_up_to_milliseconds) {
  const int rest = os::Deadline::After(1h).PollTimeout();
  EXPECT_LE(rest, 3'600'000);
  EXPECT_GT(rest, 0);
  // Less than a millisecond is one, unless it has passed meanwhile.
  const os::Deadline close = os::Deadline::After(900us);
  const int last = close.PollTimeout();
  EXPECT_TRUE(last == 1 || close.HasPassed()) << last;
}

TEST(Deadline, that_is_too_far_for_a_poll_is_the_longest_poll) {
  EXPECT_EQ(os::Deadline::After(24h * 365).PollTimeout(), INT_MAX);
  EXPECT_EQ(os::Deadline::After(std::chrono::nanoseconds::max()).PollTimeout(), INT_MAX);
}

// A signal every millisecond: no poll ever gets to the end of its time.
std::vector<int> timeouts;
constexpr std::size_t ManyPolls = 5'000;

TEST(WaitReadable, that_is_interrupted_again_and_again_ends_at_its_deadline) {
  timeouts.clear();
  const os::SystemCallsGuard guard;
  os::Calls().poll = [](pollfd* entries, nfds_t count, int milliseconds) {
    if (milliseconds == 0) return ::poll(entries, count, 0);
    timeouts.push_back(milliseconds);
    if (timeouts.size() > ManyPolls) return 0;
    ::usleep(1000);
    return errno = EINTR, -1;
  };
  const EmptySemaphore semaphore;
  EXPECT_EQ(os::WaitReadable(semaphore.Handles(), os::Deadline::After(30ms)), os::WaitTimeout);
  EXPECT_LE(timeouts.size(), 31U) << "each poll takes a millisecond at the least";
  EXPECT_LE(timeouts.front(), 30);
  EXPECT_TRUE(std::ranges::is_sorted(timeouts, std::greater<>()))
      << "each has the rest of the time";
}

std::atomic<int> alarms;
constexpr int ManyAlarms = 2'000;

// The alarms end by themselves, so that a wait without an end fails and does not hang.
void CountAlarm(int) {
  if (++alarms < ManyAlarms) return;
  const itimerval none{};
  ::setitimer(ITIMER_REAL, &none, nullptr);
}

TEST(WaitReadable, of_a_host_with_a_timer_ends_at_its_deadline) {
  alarms = 0;
  struct sigaction action {};
  action.sa_handler = CountAlarm;
  struct sigaction old {};
  ::sigaction(SIGALRM, &action, &old);
  const itimerval every{.it_interval = {.tv_sec = 0, .tv_usec = 5000},
                        .it_value = {.tv_sec = 0, .tv_usec = 5000}};
  ::setitimer(ITIMER_REAL, &every, nullptr);
  const EmptySemaphore semaphore;
  EXPECT_EQ(os::WaitReadable(semaphore.Handles(), os::Deadline::After(100ms)), os::WaitTimeout);
  const itimerval none{};
  ::setitimer(ITIMER_REAL, &none, nullptr);
  ::sigaction(SIGALRM, &old, nullptr);
  EXPECT_LT(alarms, ManyAlarms) << "the wait ended only when nothing interrupted it any more";
}

TEST(ReleaseSemaphoreHandle, is_not_turned_away_by_one_refusal) {
  static int refusals;
  const EmptySemaphore semaphore;
  const HANDLE handle = semaphore.Handles()[0];
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) -> ssize_t {
    return refusals-- > 0 ? (errno = EIO, -1) : ::write(descriptor, bytes, count);
  };
  refusals = 3;
  EXPECT_TRUE(os::ReleaseSemaphoreHandle(handle));
  EXPECT_EQ(os::SemaphoreCount(handle), 1U);
  refusals = INT_MAX;
  EXPECT_FALSE(os::ReleaseSemaphoreHandle(handle));
  EXPECT_EQ(errno, EIO);
}

}  // namespace
