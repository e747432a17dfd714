#include "rastrel/platform/os/reaper.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <string>

#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/platform/os/running_child.h"
#include "tests/support/child_signal.h"
#include "tests/support/threads.h"

namespace os = rastrel::os;
using rastrel::test::ChildSignal;
using rastrel::test::RunningChild;
using rastrel::test::Shell;

TEST(ReleaseEndedChildren, leaves_no_thread_of_a_child_whose_end_was_taken) {
  const std::size_t before = rastrel::test::Threads();
  for (int number = 0; number < 20; ++number) {
    const RunningChild child(Shell("exit 7"));
    ASSERT_TRUE(child.Started());
    EXPECT_EQ(child.WaitForEnd().status, 7);
    os::ReleaseEndedChildren();
    ASSERT_EQ(rastrel::test::ThreadsSettled(before), before);
  }
}

TEST(ReleaseEndedChildren, does_not_wait_for_a_child_that_runs) {
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  os::ReleaseEndedChildren();
  const auto state = os::TakeExitState(child.Process());
  ASSERT_TRUE(state);
  EXPECT_TRUE(state->running);
}

// Hosts that take the end of every child, or let the system take it.

constexpr int Children = 50;

void ExpectEachStatusIsHad() {
  for (int number = 0; number < Children; ++number) {
    const int status = number % 100 + 1;
    const RunningChild child(Shell("exit " + std::to_string(status)));
    ASSERT_TRUE(child.Started());
    const os::ExitState state = child.WaitForEnd();
    ASSERT_TRUE(state.byItself);
    ASSERT_EQ(state.status, status) << number;
  }
}

TEST(HostOfChildren, that_ignores_their_signal_gets_each_status) {
  REQUIRE_REAPERS();
  const ChildSignal ignored(SIG_IGN);
  ExpectEachStatusIsHad();
}

TEST(HostOfChildren, that_wants_no_zombies_gets_each_status) {
  REQUIRE_REAPERS();
  const ChildSignal noZombies(SIG_DFL, SA_NOCLDWAIT);
  ExpectEachStatusIsHad();
}

TEST(HostOfChildren, that_waits_for_every_child_gets_each_status) {
  REQUIRE_REAPERS();
  std::atomic<bool> over = false;
  std::jthread other([&over] {
    while (!over)
      if (::waitpid(-1, nullptr, 0) < 0) std::this_thread::yield();
  });
  ExpectEachStatusIsHad();
  over = true;
}

TEST(HostOfChildren, that_takes_even_those_without_a_signal_gets_each_status) {
  REQUIRE_REAPERS();
  std::atomic<bool> over = false;
  std::jthread other([&over] {
    while (!over)
      if (::waitpid(-1, nullptr, __WALL) < 0) std::this_thread::yield();
  });
  ExpectEachStatusIsHad();
  over = true;
}

TEST(HostOfChildren, that_has_no_further_process_gets_a_failure) {
  REQUIRE_REAPERS();
  const os::SystemCallsGuard guard;
  os::Calls().clone = [](int (*)(void*), void*, int, void*) { return errno = EAGAIN, -1; };
  const auto child = os::Spawn(Shell("exit 0"));
  ASSERT_FALSE(child);
  EXPECT_EQ(rastrel::Describe(child.Error()),
            "clone '/bin/sh': Resource temporarily unavailable (11)");
}

// Field 4 of the line, after a name that may hold spaces.
pid_t ParentOf(pid_t id) {
  std::ifstream stat("/proc/" + std::to_string(id) + "/stat");
  std::string line;
  std::getline(stat, line);
  std::istringstream rest(line.substr(line.rfind(')') + 1));
  std::string state;
  pid_t parent = 0;
  rest >> state >> parent;
  return parent;
}

bool Lives(pid_t id) {
  std::ifstream stat("/proc/" + std::to_string(id) + "/stat");
  std::string line;
  std::getline(stat, line);
  return line.rfind(')') != line.npos && line[line.rfind(')') + 2] != 'Z';
}

// The RIP writes the host down as the owner of its pages, and not the reaper, which ends before
// they are taken.
TEST(HostOfChildren, is_the_starter_of_a_child_and_the_reaper_is_known_by_its_name) {
  REQUIRE_REAPERS();
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  const pid_t reaper = ParentOf(static_cast<pid_t>(child.Id()));
  std::string name;
  std::ifstream file("/proc/" + std::to_string(reaper) + "/comm");
  std::getline(file, name);
  EXPECT_EQ(name, "rastrel-reaper");
  EXPECT_EQ(ParentOf(reaper), ::getpid());
  EXPECT_EQ(os::StarterProcessId(), static_cast<std::uint32_t>(::getppid()));
}

TEST(HostOfChildren, whose_reaper_somebody_kills_gets_a_failure_and_no_endless_wait) {
  REQUIRE_REAPERS();
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  const pid_t reaper = ParentOf(static_cast<pid_t>(child.Id()));
  ASSERT_NE(reaper, ::getpid());
  ASSERT_EQ(::kill(reaper, SIGKILL), 0);
  const auto state = os::Terminate(child.Process());
  ASSERT_FALSE(state);
  EXPECT_EQ(state.Error().error, ECHILD);
  for (int rounds = 0; Lives(static_cast<pid_t>(child.Id())) && rounds < 30'000; ++rounds)
    ::usleep(1000);
  EXPECT_FALSE(Lives(static_cast<pid_t>(child.Id()))) << "the child itself was ended";
}

TEST(HostOfChildren, that_is_killed_leaves_no_reaper) {
  REQUIRE_REAPERS();
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const pid_t host = ::fork();
  if (host == 0) {
    const auto child = os::Spawn(Shell("exec sleep 30"));
    const pid_t ids[2] = {child ? static_cast<pid_t>(child->id) : 0,
                          child ? ParentOf(static_cast<pid_t>(child->id)) : 0};
    static_cast<void>(!::write(ends[1], ids, sizeof ids));
    ::pause();
    ::_exit(0);
  }
  pid_t ids[2] = {};
  ASSERT_EQ(::read(ends[0], ids, sizeof ids), static_cast<ssize_t>(sizeof ids));
  ::close(ends[0]);
  ::close(ends[1]);
  EXPECT_TRUE(Lives(ids[1]));
  ::kill(host, SIGKILL);
  ::waitpid(host, nullptr, 0);
  for (int rounds = 0; Lives(ids[1]) && rounds < 30'000; ++rounds) ::usleep(1000);
  EXPECT_FALSE(Lives(ids[1]));
  if (ids[0] > 0) ::kill(ids[0], SIGKILL);
}
