#include "rastrel/platform/os/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/reaper.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/platform/os/running_child.h"
#include "tests/support/environment_guard.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/scratch_directory.h"

namespace os = rastrel::os;
using rastrel::test::OpenDescriptors;
using rastrel::test::RunningChild;
using rastrel::test::ScratchDirectory;
using rastrel::test::Shell;

namespace {

// A child's standard output, until it closes it.
std::string OutputOf(os::SpawnRequest request) {
  HANDLE read = 0;
  HANDLE write = 0;
  if (!os::CreatePipe(read, write, 0)) return "(no pipe)";
  request.standardOutput = write;
  const RunningChild child(request);
  os::CloseHandle(write);
  std::string output;
  char buffer[4096];
  while (const std::size_t got = os::ReadSome(read, buffer, sizeof buffer).ValueOr(0))
    output.append(buffer, got);
  os::CloseHandle(read);
  EXPECT_TRUE(child.Started());
  return output;
}

// A child of the host that the library knows nothing of.
pid_t HostsOwnChild() {
  const pid_t id = ::fork();
  if (id == 0) ::_exit(42);
  return id;
}

void ExpectHostsOwnChildIsLeftAlone(pid_t id) {
  int status = 0;
  EXPECT_EQ(::waitpid(id, &status, 0), id);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 42);
}

int FailToOpenProcess(pid_t, unsigned) {
  errno = EMFILE;
  return -1;
}

}  // namespace

TEST(Spawn, the_exit_status_is_the_childs) {
  for (const int status : {0, 1, 2, 3, 4, 255}) {
    const RunningChild child(Shell("exit " + std::to_string(status)));
    ASSERT_TRUE(child.Started());
    const os::ExitState state = child.WaitForEnd();
    EXPECT_FALSE(state.running);
    EXPECT_TRUE(state.byItself);
    EXPECT_EQ(state.status, status);
  }
}

TEST(Spawn, a_child_that_runs_is_reported_as_running) {
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  const auto state = os::TakeExitState(child.Process());
  ASSERT_TRUE(state);
  EXPECT_TRUE(state->running);
}

TEST(Spawn, a_child_that_a_signal_ended_differs_from_one_that_exited) {
  const RunningChild child(Shell("kill -TERM $$"));
  ASSERT_TRUE(child.Started());
  const os::ExitState state = child.WaitForEnd();
  EXPECT_FALSE(state.byItself);
  EXPECT_EQ(state.status, SIGTERM);
}

TEST(Spawn, a_program_that_can_not_be_executed_is_a_failure_with_the_number_of_the_exec) {
  const ScratchDirectory scratch;
  scratch.Write("plain", "no program");
  scratch.Write("garbage", "no program");
  ASSERT_EQ(::chmod(scratch.Path("garbage").c_str(), 0755), 0);
  const struct {
    std::string path;
    int error;
  } rows[] = {{scratch.Path("none"), ENOENT},
              {scratch.Path("plain"), EACCES},
              {scratch.Path("garbage"), ENOEXEC},
              {scratch.Path(), EACCES},
              {"", ENOENT}};
  const std::size_t before = OpenDescriptors();
  for (const auto& row : rows) {
    const auto child = os::Spawn({.executable = row.path, .arguments = {"x"}});
    ASSERT_FALSE(child) << row.path;
    EXPECT_EQ(child.Error().error, row.error) << row.path;
    EXPECT_EQ(child.Error().what, "posix_spawn");
    EXPECT_EQ(child.Error().where, row.path);
  }
  EXPECT_EQ(OpenDescriptors(), before);
  // No child is left, neither running nor as a zombie.
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(Spawn, a_directory_that_is_missing_is_named_in_the_failure) {
  os::SpawnRequest request = Shell("exit 0");
  request.directory = "/no/such/directory";
  const auto child = os::Spawn(request);
  ASSERT_FALSE(child);
  EXPECT_EQ(rastrel::Describe(child.Error()),
            "chdir '/no/such/directory': No such file or directory (2)");
}

TEST(Spawn, arguments_arrive_one_by_one) {
  os::SpawnRequest request = Shell("");
  request.arguments = {
      "sh", "-c", "for a; do printf '[%s]' \"$a\"; done", "name", "a b", "", "c\"d", "\xC3\xA9\n"};
  EXPECT_EQ(OutputOf(request), "[a b][][c\"d][\xC3\xA9\n]");
}

TEST(Spawn, the_environment_is_the_one_given_and_nothing_else) {
  os::SpawnRequest request = Shell("");
  request.executable = "/usr/bin/env";
  request.arguments = {"env"};
  request.environment = {"ONE=1", "TWO=a b=c"};
  EXPECT_EQ(OutputOf(request), "ONE=1\nTWO=a b=c\n");
}

TEST(Spawn, the_directory_is_the_one_given_and_a_relative_program_is_taken_from_ours) {
  const ScratchDirectory scratch;
  scratch.Write("tool", "#!/bin/sh\npwd\n");
  scratch.Write("work/x", "");
  ASSERT_EQ(::chmod(scratch.Path("tool").c_str(), 0755), 0);
  const std::filesystem::path old = std::filesystem::current_path();
  std::filesystem::current_path(scratch.Path());
  os::SpawnRequest request = Shell("");
  request.executable = "./tool";
  request.arguments = {"tool"};
  request.directory = scratch.Path("work");
  const std::string output = OutputOf(request);
  std::filesystem::current_path(old);
  EXPECT_EQ(output, std::filesystem::canonical(scratch.Path("work")).string() + "\n");
}

TEST(Spawn, the_child_leads_a_session_of_its_own_without_a_terminal) {
  HANDLE read = 0;
  HANDLE write = 0;
  ASSERT_TRUE(os::CreatePipe(read, write, 0));
  os::SpawnRequest request =
      Shell("cut -d ' ' -f 1,5,6,7 /proc/$$/stat; (: </dev/tty) 2>/dev/null && echo terminal");
  request.standardOutput = write;
  const RunningChild child(request);
  ASSERT_TRUE(child.Started());
  os::CloseHandle(write);
  std::string output(4096, '\0');
  child.WaitForEnd();
  output.resize(os::ReadSome(read, output.data(), output.size()).ValueOr(0));
  os::CloseHandle(read);
  const std::string id = std::to_string(child.Id());
  EXPECT_EQ(output, id + " " + id + " " + id + " 0\n");
}

TEST(Spawn, the_child_has_no_descriptors_but_the_three) {
  const int inheritable = ::dup(0);
  const int high = ::fcntl(0, F_DUPFD, 200);
  os::SpawnRequest request = Shell("");
  request.executable = "/bin/ls";
  request.arguments = {"ls", "/proc/self/fd"};
  // ls itself opens the directory as the lowest free number.
  EXPECT_EQ(OutputOf(request), "0\n1\n2\n3\n");
  ::close(inheritable);
  ::close(high);
}

TEST(Spawn, signals_are_default_and_unmasked_whatever_this_process_has_set) {
  sigset_t all;
  sigset_t old;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &old);
  const auto oldPipe = ::signal(SIGPIPE, SIG_IGN);
  const auto oldChild = ::signal(SIGUSR1, SIG_IGN);
  const std::string output = OutputOf(Shell("grep -E '^Sig(Blk|Ign):' /proc/self/status"));
  ::signal(SIGPIPE, oldPipe);
  ::signal(SIGUSR1, oldChild);
  ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
  // The C library ignores the two signals 32 and 33 that it keeps for itself.
  EXPECT_TRUE(output == "SigBlk:\t0000000000000000\nSigIgn:\t0000000180000000\n" ||
              output == "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n")
      << output;
}

TEST(Spawn, streams_may_be_the_standard_ones_in_another_order) {
  // Standard output and error of the child change places.
  HANDLE outRead = 0;
  HANDLE outWrite = 0;
  HANDLE errorRead = 0;
  HANDLE errorWrite = 0;
  ASSERT_TRUE(os::CreatePipe(outRead, outWrite, 0));
  ASSERT_TRUE(os::CreatePipe(errorRead, errorWrite, 0));
  const int savedOut = ::dup(1);
  const int savedError = ::dup(2);
  ::dup2(outWrite, 1);
  ::dup2(errorWrite, 2);
  os::SpawnRequest request = Shell("echo out; echo error >&2");
  request.standardOutput = 2;
  request.standardError = 1;
  bool started = false;
  {
    const RunningChild child(request);
    started = child.Started();
    if (started) child.WaitForEnd();
  }
  ::dup2(savedOut, 1);
  ::dup2(savedError, 2);
  for (int descriptor : {savedOut, savedError, outWrite, errorWrite}) ::close(descriptor);
  ASSERT_TRUE(started);
  char buffer[64];
  EXPECT_EQ(std::string(buffer, os::ReadSome(outRead, buffer, 64).ValueOr(0)), "error\n");
  EXPECT_EQ(std::string(buffer, os::ReadSome(errorRead, buffer, 64).ValueOr(0)), "out\n");
  os::CloseHandle(outRead);
  os::CloseHandle(errorRead);
}

TEST(Spawn, a_stream_that_this_process_lacks_is_empty_for_the_child) {
  const int saved = ::dup(0);
  ::close(0);
  const std::string output = OutputOf(Shell("readlink /proc/self/fd/0; wc -c"));
  ::dup2(saved, 0);
  ::close(saved);
  EXPECT_EQ(output, "/dev/null\n0\n");
}

TEST(Spawn, a_failing_copy_of_a_stream_is_a_failure) {
  const os::SystemCallsGuard guard;
  os::Calls().duplicate = [](int, int) {
    errno = EMFILE;
    return -1;
  };
  os::SpawnRequest request = Shell("exit 0");
  request.standardOutput = 2;
  const auto child = os::Spawn(request);
  ASSERT_FALSE(child);
  EXPECT_EQ(child.Error().error, EMFILE);
}

TEST(Spawn, a_child_without_a_descriptor_is_ended_reaped_and_reported) {
  const pid_t other = HostsOwnChild();
  static pid_t spawned;
  const os::SystemCallsGuard guard;
  os::Calls().pidfd_open = [](pid_t id, unsigned flags) {
    spawned = id;
    return FailToOpenProcess(id, flags);
  };
  const auto child = os::Spawn(Shell("exec sleep 30"));
  ASSERT_FALSE(child);
  EXPECT_EQ(child.Error().what, "pidfd_open");
  EXPECT_EQ(child.Error().error, EMFILE);
  EXPECT_EQ(::kill(spawned, 0), -1);
  EXPECT_EQ(errno, ESRCH);
  ExpectHostsOwnChildIsLeftAlone(other);
}

TEST(Spawn, a_spawn_without_memory_or_processes_is_a_failure) {
  for (const int error : {ENOMEM, EAGAIN}) {
    static int number;
    number = error;
    const os::SystemCallsGuard guard;
    os::Calls().spawn = [](pid_t*, const char*, const posix_spawn_file_actions_t*,
                           const posix_spawnattr_t*, char* const*, char* const*) { return number; };
    const auto child = os::Spawn(Shell("exit 0"));
    ASSERT_FALSE(child);
    EXPECT_EQ(child.Error().error, error);
  }
}

TEST(TakeExitState, leaves_other_children_of_the_process_alone) {
  const pid_t other = HostsOwnChild();
  const RunningChild child(Shell("exit 7"));
  ASSERT_TRUE(child.Started());
  EXPECT_EQ(child.WaitForEnd().status, 7);
  ExpectHostsOwnChildIsLeftAlone(other);
}

TEST(TakeExitState, is_had_once) {
  const RunningChild child(Shell("exit 7"));
  ASSERT_TRUE(child.Started());
  EXPECT_EQ(child.WaitForEnd().status, 7);
  const auto state = os::TakeExitState(child.Process());
  ASSERT_FALSE(state);
  EXPECT_EQ(state.Error().error, ECHILD);
  const auto ended = os::Terminate(child.Process());
  ASSERT_FALSE(ended);
  EXPECT_EQ(ended.Error().error, ECHILD);
}

TEST(TakeExitState, a_handle_of_no_process_is_a_failure) {
  for (const HANDLE handle : {INVALID_HANDLE_VALUE, 0, 1}) {
    EXPECT_FALSE(os::TakeExitState(handle)) << handle;
    EXPECT_FALSE(os::Terminate(handle)) << handle;
  }
}

TEST(TakeExitState, goes_on_after_an_interruption) {
  const RunningChild child(Shell("exit 3"));
  ASSERT_TRUE(child.Started());
  pollfd entry{.fd = child.Process(), .events = POLLIN, .revents = 0};
  ASSERT_EQ(::poll(&entry, 1, 20'000), 1);
  static int calls;
  calls = 0;
  const os::SystemCallsGuard guard;
  os::Calls().waitid = [](idtype_t type, id_t id, siginfo_t* information, int options) {
    if (++calls < 3) {
      errno = EINTR;
      return -1;
    }
    return ::waitid(type, id, information, options);
  };
  const auto state = os::TakeExitState(child.Process());
  ASSERT_TRUE(state);
  EXPECT_EQ(state->status, 3);
}

TEST(Terminate, ends_a_child_that_ignores_every_other_signal) {
  HANDLE read = 0;
  HANDLE write = 0;
  ASSERT_TRUE(os::CreatePipe(read, write, 0));
  os::SpawnRequest request = Shell("trap '' TERM INT HUP; echo ready; while :; do sleep 1; done");
  request.standardOutput = write;
  const auto child = os::Spawn(request);
  os::CloseHandle(write);
  ASSERT_TRUE(child);
  char ready = 0;
  ASSERT_EQ(os::ReadSome(read, &ready, 1).ValueOr(0), 1U);
  os::CloseHandle(read);
  const auto state = os::Terminate(child->process);
  ASSERT_TRUE(state);
  EXPECT_FALSE(state->running);
  EXPECT_FALSE(state->byItself);
  EXPECT_EQ(state->status, SIGKILL);
  EXPECT_FALSE(os::CanOpenProcess(child->id));
  HANDLE process = child->process;
  os::CloseHandle(process);
}

TEST(Terminate, a_child_that_had_ended_before_keeps_its_own_status) {
  const RunningChild child(Shell("exit 5"));
  ASSERT_TRUE(child.Started());
  pollfd entry{.fd = child.Process(), .events = POLLIN, .revents = 0};
  ASSERT_EQ(::poll(&entry, 1, 20'000), 1);
  const auto state = os::Terminate(child.Process());
  ASSERT_TRUE(state);
  EXPECT_TRUE(state->byItself);
  EXPECT_EQ(state->status, 5);
}

TEST(Terminate, a_signal_that_may_not_be_sent_is_a_failure_and_no_endless_wait) {
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  const os::SystemCallsGuard guard;
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) {
    errno = EPERM;
    return -1;
  };
  const auto state = os::Terminate(child.Process());
  ASSERT_FALSE(state);
  EXPECT_EQ(state.Error().what, "pidfd_send_signal");
  EXPECT_EQ(state.Error().error, EPERM);
}

TEST(SendSignal, reaches_the_child_and_not_one_that_has_ended) {
  const RunningChild child(Shell("exec sleep 30"));
  ASSERT_TRUE(child.Started());
  ASSERT_TRUE(os::SendSignal(child.Process(), SIGINT));
  const os::ExitState state = child.WaitForEnd();
  EXPECT_FALSE(state.byItself);
  EXPECT_EQ(state.status, SIGINT);
  EXPECT_TRUE(os::SendSignal(child.Process(), SIGINT)) << "nobody is left to get it";
  const os::SystemCallsGuard guard;
  os::Calls().pidfd_send_signal = [](int, int, siginfo_t*, unsigned) { return errno = EPERM, -1; };
  const auto sent = os::SendSignal(child.Process(), SIGINT);
  ASSERT_FALSE(sent);
  EXPECT_EQ(sent.Error().error, EPERM);
}

TEST(EndWithStarter, fails_if_another_process_has_started_this_one) {
  const auto bound = os::EndWithStarter(os::CurrentProcessId());
  ASSERT_FALSE(bound);
  EXPECT_EQ(bound.Error().error, ESRCH);
  EXPECT_TRUE(os::EndWithStarter(os::StarterProcessId()));
  ASSERT_EQ(::prctl(PR_SET_PDEATHSIG, 0), 0);
}

TEST(CanOpenProcess, is_true_for_living_processes_only) {
  EXPECT_TRUE(os::CanOpenProcess(os::CurrentProcessId()));
  EXPECT_FALSE(os::CanOpenProcess(0));
  EXPECT_FALSE(os::CanOpenProcess(0xFFFFFFFF));
  EXPECT_FALSE(os::CanOpenProcess(0x80000000));
  EXPECT_FALSE(os::CanOpenProcess(0x7FFFFFFF));
  const auto child = os::Spawn(Shell("exec sleep 30"));
  ASSERT_TRUE(child);
  EXPECT_TRUE(os::CanOpenProcess(child->id));
  EXPECT_TRUE(os::Terminate(child->process));
  EXPECT_FALSE(os::CanOpenProcess(child->id));
  HANDLE process = child->process;
  os::CloseHandle(process);
}

TEST(CurrentThreadId, differs_between_threads_and_is_the_process_on_the_first) {
  EXPECT_EQ(os::CurrentProcessId(), static_cast<std::uint32_t>(::getpid()));
  std::uint32_t other = 0;
  std::thread([&] { other = os::CurrentThreadId(); }).join();
  EXPECT_NE(other, os::CurrentThreadId());
  EXPECT_NE(other, 0U);
}

TEST(EnvironmentEntries, are_this_processs_variables_in_order) {
  const rastrel::test::EnvironmentGuard variable("RASTREL_TEST_VARIABLE", "a=b");
  const auto entries = os::EnvironmentEntries();
  EXPECT_NE(std::find(entries.begin(), entries.end(), "RASTREL_TEST_VARIABLE=a=b"), entries.end());
  for (std::size_t index = 0; index < entries.size(); ++index)
    ASSERT_EQ(entries[index], ::environ[index]);
  EXPECT_EQ(::environ[entries.size()], nullptr);
}
