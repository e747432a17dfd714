#include "interpreter/guardian.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>

#include "interpreter/guarded_process.h"
#include "tests/support/scratch_directory.h"

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
  auto guardian = Guardian::Start(false);
  if (!guardian) _exit(9);
  return std::move(*guardian);
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
    auto guardian = Guardian::Start(false);
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
    auto guardian = Guardian::Start(false);
    ASSERT_TRUE(guardian);
    ASSERT_TRUE(guardian->Guard(directory.Path("one")));
    ASSERT_EQ(mkdir(directory.Path("one").c_str(), 0777), 0);
    ASSERT_EQ(symlink(directory.Path("kept").c_str(), directory.Path("one/link").c_str()), 0);
  }
  EXPECT_FALSE(directory.Has("one"));
  EXPECT_EQ(directory.Read("kept/file"), "x");
}

TEST(Guardian, refuses_paths_that_depend_on_a_directory) {
  auto guardian = Guardian::Start(false);
  ASSERT_TRUE(guardian);
  EXPECT_FALSE(guardian->Guard("relative"));
  EXPECT_FALSE(guardian->Guard(""));
}

TEST(Guardian, refuses_groups_that_are_no_single_one) {
  auto guardian = Guardian::Start(false);
  ASSERT_TRUE(guardian);
  for (const pid_t leader : {-1, 0, 1}) EXPECT_FALSE(guardian->GuardGroup(leader));
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
    while (!directory.Has("grandchild")) usleep(1000);
    raise(SIGKILL);
  });
  EXPECT_FALSE(directory.Has("half"));
  const std::size_t written = directory.Read("grandchild").size();
  usleep(50000);
  EXPECT_EQ(directory.Read("grandchild").size(), written);
}

TEST(GuardedProcess, returns_how_the_program_ended) {
  auto guardian = Guardian::Start(false);
  ASSERT_TRUE(guardian);
  auto leaving = GuardedProcess::Start(Shell("exit 7"), *guardian);
  ASSERT_TRUE(leaving);
  const ProcessEnd left = leaving->Wait();
  EXPECT_TRUE(left.byItself);
  EXPECT_EQ(left.status, 7);
  auto killed = GuardedProcess::Start(Shell("kill -TERM $$"), *guardian);
  ASSERT_TRUE(killed);
  const ProcessEnd end = killed->Wait();
  EXPECT_FALSE(end.byItself);
  EXPECT_EQ(end.status, SIGTERM);
  EXPECT_EQ(killed->Wait().status, SIGTERM);
}

TEST(GuardedProcess, that_can_not_be_executed_is_a_failed_start) {
  auto guardian = Guardian::Start(false);
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
  auto guardian = Guardian::Start(false);
  ASSERT_TRUE(guardian);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ProcessRequest request = Shell("ls /proc/self/fd | tr '\\n' ' ' >&4");
  // ls itself opens one more, the first that is free.
  request.descriptors = {-1, -1, -1, -1, ends[1]};
  auto process = GuardedProcess::Start(request, *guardian);
  ASSERT_TRUE(process);
  EXPECT_EQ(process->Wait().status, 0);
  char text[100] = {};
  const ssize_t count = read(ends[0], text, sizeof text - 1);
  close(ends[0]);
  close(ends[1]);
  ASSERT_GT(count, 0);
  EXPECT_EQ(std::string(text), "0 1 2 3 4 5 ");
}

TEST(GuardedProcess, can_not_write_more_than_its_limit) {
  const test::ScratchDirectory directory;
  auto guardian = Guardian::Start(false);
  ASSERT_TRUE(guardian);
  ProcessRequest request =
      Shell("exec dd if=/dev/zero of=" + directory.Path("big") + " bs=65536 count=100");
  request.fileSizeLimit = 100000;
  auto process = GuardedProcess::Start(request, *guardian);
  ASSERT_TRUE(process);
  const ProcessEnd end = process->Wait();
  EXPECT_FALSE(end.byItself);
  EXPECT_EQ(end.status, SIGXFSZ);
  EXPECT_EQ(directory.Read("big").size(), 100000U);
}

}  // namespace
}  // namespace rastrel::interpreter
