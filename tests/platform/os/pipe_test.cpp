#include "rastrel/platform/os/pipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/error_number.h"
#include "tests/support/open_descriptors.h"

namespace os = rastrel::os;
using rastrel::test::ErrorNumber;
using rastrel::test::OpenDescriptors;

namespace {

struct Ends {
  HANDLE read = 77;
  HANDLE write = 78;
  ~Ends() {
    if (read != 77) os::CloseHandle(read);
    if (write != 78) os::CloseHandle(write);
  }
  [[nodiscard]] bool Untouched() const { return read == 77 && write == 78; }
};

bool IsPipe(int descriptor) {
  struct stat state {};
  return ::fstat(descriptor, &state) == 0 && S_ISFIFO(state.st_mode);
}

std::string ReadAll(HANDLE handle) {
  std::string content;
  char buffer[65536];
  while (const std::size_t got = os::ReadSome(handle, buffer, sizeof buffer).ValueOr(0))
    content.append(buffer, got);
  return content;
}

std::string Pattern(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t index = 0; index < size; ++index)
    content[index] = static_cast<char>(index * 7 >> 3);
  return content;
}

std::atomic<int> brokenPipes{0};

// Counts the signals that arrive, for as long as it lives.
class BrokenPipeCounter {
 public:
  BrokenPipeCounter() {
    brokenPipes = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { ++brokenPipes; };
    ::sigaction(SIGPIPE, &action, &m_Old);
  }
  ~BrokenPipeCounter() { ::sigaction(SIGPIPE, &m_Old, nullptr); }
  BrokenPipeCounter(const BrokenPipeCounter&) = delete;
  BrokenPipeCounter& operator=(const BrokenPipeCounter&) = delete;

 private:
  struct sigaction m_Old {};
};

int FailWithTooManyFiles(int*, int) {
  errno = EMFILE;
  return -1;
}

int FailToSize(int, int) {
  errno = EPERM;
  return -1;
}

}  // namespace

TEST(CreatePipe, both_ends_are_closed_on_exec_and_joined) {
  Ends ends;
  ASSERT_TRUE(os::CreatePipe(ends.read, ends.write, 0));
  EXPECT_EQ(::fcntl(ends.read, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(::fcntl(ends.write, F_GETFD), FD_CLOEXEC);
  EXPECT_TRUE(os::WriteInput(ends.write, "through"));
  os::CloseHandle(ends.write);
  EXPECT_EQ(ReadAll(ends.read), "through");
}

TEST(CreatePipe, the_buffer_gets_the_size_asked_for_rounded_up) {
  Ends ends;
  ASSERT_TRUE(os::CreatePipe(ends.read, ends.write, 100'000));
  EXPECT_EQ(::fcntl(ends.read, F_GETPIPE_SZ), 131'072);
}

TEST(CreatePipe, a_size_that_is_refused_is_no_failure) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = FailToSize;
  Ends ends;
  EXPECT_TRUE(os::CreatePipe(ends.read, ends.write, std::size_t{1} << 40));
}

TEST(CreatePipe, where_much_is_refused_the_usual_limit_is_asked_for) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = [](int descriptor, int bytes) {
    return bytes > 1 << 20 ? FailToSize(descriptor, bytes)
                           : ::fcntl(descriptor, F_SETPIPE_SZ, bytes);
  };
  Ends ends;
  ASSERT_TRUE(os::CreatePipe(ends.read, ends.write, 20'000'000));
  EXPECT_EQ(::fcntl(ends.read, F_GETPIPE_SZ), 1 << 20);
}

TEST(CreatePipe, neither_end_is_standard_where_the_three_are_closed) {
  const int saved[] = {::dup(0), ::dup(1), ::dup(2)};
  for (int place = 0; place < 3; ++place) ::close(place);
  Ends ends;
  const auto made = os::CreatePipe(ends.read, ends.write, 0);
  const bool closed = ::fcntl(0, F_GETFD) == -1 && ::fcntl(1, F_GETFD) == -1;
  for (int place = 0; place < 3; ++place) {
    ::dup2(saved[place], place);
    ::close(saved[place]);
  }
  ASSERT_TRUE(made);
  EXPECT_TRUE(closed);
  EXPECT_GT(ends.read, 2);
  EXPECT_GT(ends.write, 2);
}

TEST(CreatePipe, a_failure_leaves_both_handles_untouched) {
  const os::SystemCallsGuard guard;
  os::Calls().pipe2 = FailWithTooManyFiles;
  Ends ends;
  EXPECT_EQ(ErrorNumber(os::CreatePipe(ends.read, ends.write, 0)), EMFILE);
  EXPECT_TRUE(ends.Untouched());
  EXPECT_FALSE(os::CreateInput(ends.read, ends.write, "x"));
  EXPECT_TRUE(ends.Untouched());
}

TEST(CreatePipe, a_failing_copy_of_a_low_descriptor_leaks_nothing) {
  const int saved = ::dup(0);
  ::close(0);
  const std::size_t before = OpenDescriptors();
  Ends ends;
  rastrel::Expected<void> made;
  {
    const os::SystemCallsGuard guard;
    os::Calls().duplicate = [](int, int) {
      errno = EMFILE;
      return -1;
    };
    made = os::CreatePipe(ends.read, ends.write, 0);
  }
  const std::size_t after = OpenDescriptors();
  ::dup2(saved, 0);
  ::close(saved);
  EXPECT_EQ(ErrorNumber(made), EMFILE);
  EXPECT_TRUE(ends.Untouched());
  EXPECT_EQ(after, before);
}

TEST(CreateInput, a_text_that_a_pipe_holds_goes_through_one_without_waiting) {
  for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 65535U, 65536U, 65537U, 1'000'000U}) {
    const std::string content = Pattern(size);
    Ends ends;
    ASSERT_TRUE(os::CreateInput(ends.read, ends.write, content));
    EXPECT_TRUE(IsPipe(ends.read)) << size;
    EXPECT_EQ(::fcntl(ends.read, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(ends.write, F_GETFD), FD_CLOEXEC);
    // Nobody reads yet: a write that waited would never come back.
    ASSERT_TRUE(os::WriteInput(ends.write, content));
    os::CloseHandle(ends.write);
    EXPECT_TRUE(ReadAll(ends.read) == content) << size;
  }
}

TEST(CreateInput, where_no_pipe_is_large_enough_a_sealed_memory_file_holds_the_content) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = FailToSize;
  const std::string content = Pattern(3'000'000);
  Ends ends;
  ASSERT_TRUE(os::CreateInput(ends.read, ends.write, content));
  EXPECT_FALSE(IsPipe(ends.read));
  EXPECT_EQ(::fcntl(ends.read, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(::fcntl(ends.write, F_GETFD), FD_CLOEXEC);
  ASSERT_TRUE(os::WriteInput(ends.write, content));
  EXPECT_EQ(::write(ends.write, "x", 1), -1);
  EXPECT_EQ(errno, EPERM);
  os::CloseHandle(ends.write);
  EXPECT_TRUE(ReadAll(ends.read) == content);
}

TEST(CreateInput, a_pipe_that_is_granted_less_than_the_content_is_not_taken) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = [](int, int bytes) { return bytes - 1; };
  Ends ends;
  ASSERT_TRUE(os::CreateInput(ends.read, ends.write, "content"));
  EXPECT_FALSE(IsPipe(ends.read));
}

TEST(CreateInput, without_pipe_size_and_memory_file_it_fails_and_leaks_nothing) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = FailToSize;
  os::Calls().memory_file = [](const char*, unsigned) {
    errno = ENOMEM;
    return -1;
  };
  const std::size_t before = OpenDescriptors();
  Ends ends;
  EXPECT_EQ(ErrorNumber(os::CreateInput(ends.read, ends.write, "content")), ENOMEM);
  EXPECT_TRUE(ends.Untouched());
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(CreateInput, a_memory_file_that_can_not_be_filled_or_copied_is_a_failure) {
  const os::SystemCallsGuard guard;
  os::Calls().set_pipe_size = FailToSize;
  const std::size_t before = OpenDescriptors();
  {
    const os::SystemCallsGuard inner;
    os::Calls().write = [](int, const void*, size_t) -> ssize_t {
      errno = ENOSPC;
      return -1;
    };
    Ends ends;
    EXPECT_EQ(ErrorNumber(os::CreateInput(ends.read, ends.write, "content")), ENOSPC);
    EXPECT_TRUE(ends.Untouched());
  }
  os::Calls().duplicate = [](int, int) {
    errno = EMFILE;
    return -1;
  };
  Ends ends;
  EXPECT_EQ(ErrorNumber(os::CreateInput(ends.read, ends.write, "content")), EMFILE);
  EXPECT_TRUE(ends.Untouched());
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(CreateInput, twenty_megabytes_reach_a_child_that_reads_late) {
  const std::string content(20'000'000, 'c');
  for (const bool refused : {false, true}) {
    const os::SystemCallsGuard guard;
    if (refused) os::Calls().set_pipe_size = FailToSize;
    Ends input;
    Ends output;
    ASSERT_TRUE(os::CreateInput(input.read, input.write, content));
    ASSERT_TRUE(os::CreatePipe(output.read, output.write, 0));
    const auto child = os::Spawn({.executable = "/bin/sh",
                                  .arguments = {"sh", "-c", "sleep 0.2; wc -c"},
                                  .environment = {"PATH=/usr/bin:/bin"},
                                  .standardInput = input.read,
                                  .standardOutput = output.write});
    ASSERT_TRUE(child);
    os::CloseHandle(input.read);
    os::CloseHandle(output.write);
    ASSERT_TRUE(os::WriteInput(input.write, content));
    os::CloseHandle(input.write);
    EXPECT_EQ(ReadAll(output.read), "20000000\n");
    HANDLE process = child->process;
    const auto end = os::Terminate(process);
    ASSERT_TRUE(end);
    os::CloseHandle(process);
  }
}

TEST(WriteInput, a_reader_that_is_gone_is_an_error_and_never_a_signal) {
  const BrokenPipeCounter counter;
  Ends ends;
  ASSERT_TRUE(os::CreateInput(ends.read, ends.write, "content"));
  os::CloseHandle(ends.read);
  EXPECT_EQ(ErrorNumber(os::WriteInput(ends.write, "content")), EPIPE);
  EXPECT_EQ(brokenPipes, 0);
  sigset_t mask;
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, nullptr, &mask), 0);
  EXPECT_EQ(::sigismember(&mask, SIGPIPE), 0);
}

TEST(WriteInput, a_signal_that_was_pending_before_stays_pending) {
  const BrokenPipeCounter counter;
  Ends ends;
  ASSERT_TRUE(os::CreateInput(ends.read, ends.write, "content"));
  os::CloseHandle(ends.read);
  sigset_t brokenPipe;
  sigset_t old;
  ::sigemptyset(&brokenPipe);
  ::sigaddset(&brokenPipe, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &brokenPipe, &old);
  ::raise(SIGPIPE);
  EXPECT_EQ(ErrorNumber(os::WriteInput(ends.write, "content")), EPIPE);
  sigset_t pending;
  ::sigpending(&pending);
  EXPECT_EQ(::sigismember(&pending, SIGPIPE), 1);
  EXPECT_EQ(brokenPipes, 0);
  ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
  EXPECT_EQ(brokenPipes, 1);
}

TEST(WriteInput, a_short_write_is_a_failure) {
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int, const void*, size_t count) {
    return static_cast<ssize_t>(count - 1);
  };
  Ends ends;
  ASSERT_TRUE(os::CreatePipe(ends.read, ends.write, 0));
  EXPECT_EQ(ErrorNumber(os::WriteInput(ends.write, "content")), EIO);
}

TEST(WriteInput, an_interruption_before_the_first_byte_is_no_failure) {
  static int calls;
  calls = 0;
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int descriptor, const void* bytes, size_t count) -> ssize_t {
    if (++calls < 3) {
      errno = EINTR;
      return -1;
    }
    return ::write(descriptor, bytes, count);
  };
  Ends ends;
  ASSERT_TRUE(os::CreateInput(ends.read, ends.write, "content"));
  EXPECT_TRUE(os::WriteInput(ends.write, "content"));
  EXPECT_EQ(calls, 3);
}

TEST(MakeNotInheritable, a_new_descriptor_takes_the_old_ones_place) {
  int descriptors[2];
  ASSERT_EQ(::pipe(descriptors), 0);
  ASSERT_EQ(::write(descriptors[1], "x", 1), 1);
  const std::size_t before = OpenDescriptors();
  HANDLE moved = os::MakeNotInheritable(descriptors[0]).ValueOr(INVALID_HANDLE_VALUE);
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_GT(moved, 2);
  EXPECT_EQ(::fcntl(moved, F_GETFD), FD_CLOEXEC);
  char byte = 0;
  EXPECT_EQ(os::ReadSome(moved, &byte, 1).ValueOr(0), 1U);
  EXPECT_EQ(byte, 'x');
  os::CloseHandle(moved);
  ::close(descriptors[1]);
}

TEST(MakeNotInheritable, a_failure_closes_the_old_one_and_says_why) {
  const os::SystemCallsGuard guard;
  os::Calls().duplicate = [](int, int) {
    errno = EMFILE;
    return -1;
  };
  const std::size_t before = OpenDescriptors();
  const int descriptor = ::dup(0);
  EXPECT_EQ(ErrorNumber(os::MakeNotInheritable(descriptor)), EMFILE);
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(ReadSome, goes_on_after_an_interruption_and_reports_other_failures) {
  static int calls;
  calls = 0;
  const os::SystemCallsGuard guard;
  os::Calls().read = [](int, void* bytes, size_t) -> ssize_t {
    errno = ++calls < 3 ? EINTR : EIO;
    if (calls != 3) return -1;
    *static_cast<char*>(bytes) = 'r';
    return 1;
  };
  char byte = 0;
  EXPECT_EQ(os::ReadSome(5, &byte, 1).ValueOr(0), 1U);
  EXPECT_EQ(byte, 'r');
  EXPECT_EQ(ErrorNumber(os::ReadSome(5, &byte, 1)), EIO);
}

TEST(CloseHandle, none_and_invalid_stay_as_they_are) {
  HANDLE none = 0;
  os::CloseHandle(none);
  EXPECT_EQ(none, 0);
  EXPECT_NE(::fcntl(0, F_GETFD), -1);
  HANDLE invalid = INVALID_HANDLE_VALUE;
  os::CloseHandle(invalid);
  EXPECT_EQ(invalid, INVALID_HANDLE_VALUE);
  HANDLE open = ::dup(0);
  const int number = open;
  errno = ENOTTY;
  os::CloseHandle(open);
  EXPECT_EQ(errno, ENOTTY);
  EXPECT_EQ(open, INVALID_HANDLE_VALUE);
  EXPECT_EQ(::fcntl(number, F_GETFD), -1);
}

TEST(StandardHandle, has_the_numbers_of_the_streams) {
  EXPECT_EQ(os::StandardHandle(os::StandardStream::Input), 0);
  EXPECT_EQ(os::StandardHandle(os::StandardStream::Output), 1);
  EXPECT_EQ(os::StandardHandle(os::StandardStream::Error), 2);
}
