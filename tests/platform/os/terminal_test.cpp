#include "rastrel/platform/os/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include "rastrel/platform/os/file_descriptor.h"
#include "tests/support/environment_guard.h"

namespace rastrel::os {
namespace {

TEST(IsTerminal, is_true_for_a_terminal_unless_it_is_dumb) {
  const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(terminal.IsOpen());
  const test::EnvironmentGuard usual("TERM", "xterm");
  EXPECT_TRUE(IsTerminal(terminal.Get()));
  const test::EnvironmentGuard dumb("TERM", "dumb");
  EXPECT_FALSE(IsTerminal(terminal.Get()));
}

TEST(IsTerminal, is_false_for_anything_else) {
  const test::EnvironmentGuard usual("TERM", "xterm");
  const FileDescriptor nothing(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  EXPECT_FALSE(IsTerminal(nothing.Get()));
  EXPECT_FALSE(IsTerminal(INVALID_HANDLE_VALUE));
}

TEST(TerminalColumns, are_those_of_the_terminal_and_0_elsewhere) {
  const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(terminal.IsOpen());
  const winsize size{.ws_row = 24, .ws_col = 132, .ws_xpixel = 0, .ws_ypixel = 0};
  ASSERT_EQ(::ioctl(terminal.Get(), TIOCSWINSZ, &size), 0);
  EXPECT_EQ(TerminalColumns(terminal.Get()), 132U);
  const FileDescriptor nothing(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  EXPECT_EQ(TerminalColumns(nothing.Get()), 0U);
}

}  // namespace
}  // namespace rastrel::os
