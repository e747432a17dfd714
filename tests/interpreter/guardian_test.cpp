#include "interpreter/guardian.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "interpreter/guarded_process.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/wait_until.h"

namespace rastrel::interpreter {
namespace {

// Runs a part in a process of its own, with the write end of a pipe as its error stream, and
// returns when that pipe has come to its end: when the process and its guardian are gone.
void RunApart(const std::function<void()>& part) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t process = fork();
  if (process == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    part();
    _exit(0);
  }
  close(ends[1]);
  char byte = 0;
  while (read(ends[0], &byte, 1) > 0) {
  }
  close(ends[0]);
  waitpid(process, nullptr, 0);
}

Guardian StartGuardian() {
  auto guardian = Guardian::Start(HeldStreams::Error);
  if (!guardian) _exit(9);
  return std::move(*guardian);
}

// One that gets no memory from the system. This process has its usual limit again
// afterwards.
Guardian StartGuardianWithoutMemory() {
  rlimit usual{};
  getrlimit(RLIMIT_AS, &usual);
  const rlimit none{0, usual.rlim_max};
  setrlimit(RLIMIT_AS, &none);
  Guardian guardian = StartGuardian();
  setrlimit(RLIMIT_AS, &usual);
  return guardian;
}

TEST(Guardian, removes_files_that_a_killed_process_was_making) {
  const test::ScratchDirectory directory;
  RunApart([&] {
    Guardian guardian = StartGuardian();
    if (!guardian.Guard(directory.Path("half"))) _exit(9);
    directory.Write("half/deep/file", "x");
    directory.Write("other", "y");
    raise(SIGKILL);
  });
  EXPECT_FALSE(directory.Has("half"));
  EXPECT_EQ(directory.Read("other"), "y");
}

TEST(Guardian, leaves_files_that_were_released) {
  const test::ScratchDirectory directory;
  RunApart([&] {
    Guardian guardian = StartGuardian();
    for (const char* const name : {"one", "two"}) {
      if (!guardian.Guard(directory.Path(name))) _exit(9);
      directory.Write(name, "x");
    }
    if (!guardian.Release(directory.Path("one"))) _exit(9);
    raise(SIGKILL);
  });
  EXPECT_EQ(directory.Read("one"), "x");
  EXPECT_FALSE(directory.Has("two"));
}

TEST(Guardian, leaves_all_when_all_was_let_go_of) {
  const test::ScratchDirectory directory;
  RunApart([&] {
    Guardian guardian = StartGuardian();
    if (!guardian.Guard(directory.Path("one"))) _exit(9);
    directory.Write("one/file", "x");
    if (!guardian.ReleaseAll()) _exit(9);
    raise(SIGKILL);
  });
  EXPECT_EQ(directory.Read("one/file"), "x");
}

TEST(Guardian, clears_away_at_an_ordinary_end_too) {
  const test::ScratchDirectory directory;
  {
    auto guardian = Guardian::Start(HeldStreams::Error);
    ASSERT_TRUE(guardian);
    ASSERT_TRUE(guardian->Guard(directory.Path("one")));
    directory.Write("one/file", "x");
  }
  EXPECT_FALSE(directory.Has("one"));
}

TEST(Guardian, removes_a_link_and_not_its_target) {
  const test::ScratchDirectory directory;
  directory.Write("kept/file", "x");
  {
    auto guardian = Guardian::Start(HeldStreams::Error);
    ASSERT_TRUE(guardian);
    ASSERT_TRUE(guardian->Guard(directory.Path("one")));
    ASSERT_EQ(mkdir(directory.Path("one").c_str(), 0777), 0);
    ASSERT_EQ(symlink(directory.Path("kept").c_str(), directory.Path("one/link").c_str()), 0);
  }
  EXPECT_FALSE(directory.Has("one"));
  EXPECT_EQ(directory.Read("kept/file"), "x");
}

TEST(Guardian, without_memory_for_a_path_leaves_its_removal_to_the_starter) {
  const test::ScratchDirectory directory;
  RunApart([&] {
    Guardian guardian = StartGuardianWithoutMemory();
    if (!guardian.Guard(directory.Path("half"))) _exit(9);
    directory.Write("half/deep/file", "x");
    directory.Write("other", "y");
  });
  EXPECT_FALSE(directory.Has("half"));
  EXPECT_EQ(directory.Read("other"), "y");
}

TEST(Guardian, without_memory_for_a_group_ends_it) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the tool itself ends a process without memory";
#endif
  Guardian guardian = StartGuardianWithoutMemory();
  const pid_t leader = fork();
  if (leader == 0) {
    setpgid(0, 0);
    while (true) pause();
  }
  setpgid(leader, leader);
  EXPECT_TRUE(guardian.GuardGroup(leader));
  EXPECT_TRUE(test::WaitUntil([&] { return waitpid(leader, nullptr, WNOHANG) == leader; }));
}

TEST(Guardian, refuses_paths_that_depend_on_a_directory) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  EXPECT_FALSE(guardian->Guard("relative"));
  EXPECT_FALSE(guardian->Guard(""));
}

TEST(Guardian, refuses_groups_that_are_no_single_one) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  for (const pid_t leader : {-1, 0, 1}) EXPECT_FALSE(guardian->GuardGroup(leader));
}

TEST(Guardian, refuses_paths_that_hold_a_zero_byte) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  EXPECT_FALSE(guardian->Guard(std::string("/tmp\0/other", 11)));
}

// As a host's streams are not the guardian's to hold: the pipe ends with the process's own end.
TEST(Guardian, holds_no_stream_that_it_is_not_asked_to) {
  int ends[2];
  int go[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(pipe(go), 0);
  const pid_t process = fork();
  if (process == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    close(go[1]);
    auto guardian = Guardian::Start(HeldStreams::None);
    if (!guardian) _exit(9);
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    char byte = 0;
    _exit(read(go[0], &byte, 1) == 0 ? 0 : 8);
  }
  close(ends[1]);
  close(go[0]);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 0);
  close(go[1]);
  close(ends[0]);
  int status = -1;
  waitpid(process, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(Guardian, leaves_the_handling_of_signals_as_it_is) {
  sigset_t taken;
  sigemptyset(&taken);
  sigaddset(&taken, SIGUSR1);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &taken, &before);
  const auto old = std::signal(SIGUSR2, SIG_IGN);
  {
    auto guardian = Guardian::Start(HeldStreams::None);
    EXPECT_TRUE(guardian);
  }
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&after, SIGUSR1), 1);
  EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
  EXPECT_EQ(std::signal(SIGUSR2, old), SIG_IGN);
}

// A copy of a process in which other threads hold locks at any moment must need none of them.
TEST(Guardian, may_be_started_in_a_process_with_threads) {
  const test::ScratchDirectory directory;
  std::atomic<bool> over = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      while (!over) {
        const std::vector<std::string> texts(100, std::string(1000, 'x'));
        std::this_thread::yield();
      }
    });
  }
  for (int i = 0; i < 50; ++i) {
    auto guardian = Guardian::Start(HeldStreams::None);
    ASSERT_TRUE(guardian);
    ASSERT_TRUE(guardian->Guard(directory.Path("one")));
    directory.Write("one/file", "x");
    ASSERT_TRUE(guardian->Guard(directory.Path("two")));
    directory.Write("two", "x");
  }
  over = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(directory.Has("one"));
  EXPECT_FALSE(directory.Has("two"));
}

TEST(Guardian, keeps_many_paths_apart) {
  const test::ScratchDirectory directory;
  constexpr int Count = 3000;
  {
    auto guardian = Guardian::Start(HeldStreams::None);
    ASSERT_TRUE(guardian);
    for (int i = 0; i < Count; ++i) {
      const std::string name = "file-" + std::to_string(i);
      ASSERT_TRUE(guardian->Guard(directory.Path(name)));
      directory.Write(name, "x");
    }
    for (int i = 0; i < Count; i += 2) {
      ASSERT_TRUE(guardian->Release(directory.Path("file-" + std::to_string(i))));
    }
  }
  for (int i = 0; i < Count; ++i) {
    ASSERT_EQ(directory.Has("file-" + std::to_string(i)), i % 2 == 0) << i;
  }
}

ProcessRequest Shell(const std::string& script) {
  ProcessRequest request;
  request.executable = "/bin/sh";
  request.arguments = {"sh", "-c", script};
  request.environment = {"PATH=/usr/bin:/bin"};
  request.descriptors = {-1, -1, -1};
  return request;
}

TEST(GuardedProcess, dies_with_the_process_that_started_it) {
  const test::ScratchDirectory directory;
  RunApart([&] {
    Guardian guardian = StartGuardian();
    if (!guardian.Guard(directory.Path("half"))) _exit(9);
    directory.Write("half/file", "x");
    // Both write without end; the grandchild has left its parent's side but not its group.
    auto process = GuardedProcess::Start(
        Shell("(while :; do echo x >> " + directory.Path("grandchild") +
              "; done) & while :; do echo x >> " + directory.Path("half/file") + "; done"),
        guardian);
    if (!process) _exit(9);
    if (!test::WaitUntil([&] { return directory.Has("grandchild"); })) _exit(9);
    raise(SIGKILL);
  });
  EXPECT_FALSE(directory.Has("half"));
  const std::size_t written = directory.Read("grandchild").size();
  usleep(50000);
  EXPECT_EQ(directory.Read("grandchild").size(), written);
}

TEST(GuardedProcess, returns_how_the_program_ended) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  auto leaving = GuardedProcess::Start(Shell("exit 7"), *guardian);
  ASSERT_TRUE(leaving);
  const auto left = leaving->Wait();
  ASSERT_TRUE(left);
  EXPECT_TRUE(left->byItself);
  EXPECT_EQ(left->status, 7);
  auto killed = GuardedProcess::Start(Shell("kill -TERM $$"), *guardian);
  ASSERT_TRUE(killed);
  const auto end = killed->Wait();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, SIGTERM);
  EXPECT_EQ(killed->Wait()->status, SIGTERM);
}

TEST(GuardedProcess, begins_with_ordinary_signals) {
  sigset_t taken;
  sigemptyset(&taken);
  sigaddset(&taken, SIGTERM);
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &taken, &before);
  const auto old = std::signal(SIGTERM, SIG_IGN);
  auto guardian = Guardian::Start(HeldStreams::None);
  ASSERT_TRUE(guardian);
  auto process = GuardedProcess::Start(Shell("kill -TERM $$; exit 7"), *guardian);
  ASSERT_TRUE(process);
  const auto end = process->Wait();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, SIGTERM);
  std::signal(SIGTERM, old);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(GuardedProcess, that_can_not_be_executed_is_a_failed_start) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  ProcessRequest request = Shell("");
  request.executable = "/nonexistent/program";
  const auto started = GuardedProcess::Start(request, *guardian);
  ASSERT_FALSE(started);
  EXPECT_EQ(started.Error().error, ENOENT);
  siginfo_t ended{};
  EXPECT_EQ(waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT), 0);
  EXPECT_EQ(ended.si_pid, 0) << "a process was not waited for";
}

TEST(GuardedProcess, gets_its_descriptors_and_no_other) {
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ProcessRequest request = Shell("ls /proc/self/fd | tr '\\n' ' ' >&4");
  // ls itself opens one more, the first that is free.
  request.descriptors = {-1, -1, -1, -1, ends[1]};
  auto process = GuardedProcess::Start(request, *guardian);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->Wait()->status, 0);
  char text[100] = {};
  const ssize_t count = read(ends[0], text, sizeof text - 1);
  close(ends[0]);
  close(ends[1]);
  ASSERT_GT(count, 0);
  EXPECT_EQ(std::string(text), "0 1 2 3 4 5 ");
}

TEST(GuardedProcess, can_not_write_more_than_its_limit) {
  const test::ScratchDirectory directory;
  auto guardian = Guardian::Start(HeldStreams::Error);
  ASSERT_TRUE(guardian);
  ProcessRequest request =
      Shell("exec dd if=/dev/zero of='" + directory.Path("big") + "' bs=65536 count=100");
  request.wall.fileBytes = 100000;
  auto process = GuardedProcess::Start(request, *guardian);
  ASSERT_TRUE(process);
  const auto end = process->Wait();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, SIGXFSZ);
  EXPECT_EQ(directory.Read("big").size(), 100000U);
}

}  // namespace
}  // namespace rastrel::interpreter
