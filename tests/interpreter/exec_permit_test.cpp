#include "interpreter/exec_permit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace rastrel::interpreter {
namespace {

// Both ends of a starting process's socket.
struct Ends {
  Ends() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    own.Reset(ends[0]);
    childs.Reset(ends[1]);
  }
  os::FileDescriptor own;
  os::FileDescriptor childs;
};

// No further descriptor can be had while it lives.
class NoDescriptors {
 public:
  NoDescriptors() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_Before), 0);
    rlimit none = m_Before;
    none.rlim_cur = 0;
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  }
  ~NoDescriptors() { EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &m_Before), 0); }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;

 private:
  rlimit m_Before{};
};

TEST(StartOfAProcess, that_has_executed_its_program_says_nothing_more) {
  Ends ends;
  ends.childs.Reset();
  const StartMessage message = ReceiveStart(ends.own.Get());
  EXPECT_FALSE(message.listener.IsOpen());
  EXPECT_EQ(message.error, 0);
}

TEST(StartOfAProcess, that_failed_says_why) {
  const Ends ends;
  const int error = ENOEXEC;
  ASSERT_EQ(write(ends.childs.Get(), &error, sizeof error), static_cast<ssize_t>(sizeof error));
  const StartMessage message = ReceiveStart(ends.own.Get());
  EXPECT_FALSE(message.listener.IsOpen());
  EXPECT_EQ(message.error, ENOEXEC);
}

TEST(StartOfAProcess, that_asks_for_its_permission_hands_its_listener_over) {
  const Ends ends;
  ASSERT_TRUE(SendListener(ends.childs.Get(), ends.childs.Get()));
  const StartMessage message = ReceiveStart(ends.own.Get());
  EXPECT_TRUE(message.listener.IsOpen());
  EXPECT_EQ(message.error, 0);
}

// Such a process waits for a permission that nobody can give: it is no program that runs.
TEST(StartOfAProcess, whose_listener_finds_no_descriptor_has_failed) {
  const Ends ends;
  ASSERT_TRUE(SendListener(ends.childs.Get(), ends.childs.Get()));
  StartMessage message;
  {
    const NoDescriptors limit;
    message = ReceiveStart(ends.own.Get());
  }
  EXPECT_FALSE(message.listener.IsOpen());
  EXPECT_EQ(message.error, EMFILE);
}

TEST(StartOfAProcess, whose_message_can_not_be_received_has_failed) {
  const StartMessage message = ReceiveStart(-1);
  EXPECT_FALSE(message.listener.IsOpen());
  EXPECT_EQ(message.error, EBADF);
}

TEST(StartOfAProcess, whose_listener_reports_no_exec_has_failed) {
  const Ends ends;
  // A socket with a byte to read is no listener.
  ASSERT_EQ(write(ends.childs.Get(), "x", 1), 1);
  const os::FileDescriptor listener(fcntl(ends.own.Get(), F_DUPFD_CLOEXEC, 0));
  const Ends other;
  EXPECT_NE(PermitExec(listener, other.own.Get()), 0);
}

TEST(StartOfAProcess, that_is_gone_needs_no_permission) {
  const Ends listener;
  Ends ends;
  ends.childs.Reset();
  EXPECT_EQ(PermitExec(listener.own, ends.own.Get()), 0);
}

}  // namespace
}  // namespace rastrel::interpreter
