#include "rastrel/platform/os/reader_gone.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace rastrel::test {
namespace {

TEST(ReaderIsGone, is_so_when_the_last_reading_end_of_a_pipe_is_closed) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const int second = ::dup(ends[0]);
  EXPECT_FALSE(os::ReaderIsGone(ends[1]));
  ::close(ends[0]);
  EXPECT_FALSE(os::ReaderIsGone(ends[1]));
  ::close(second);
  EXPECT_TRUE(os::ReaderIsGone(ends[1]));
  ::close(ends[1]);
}

TEST(ReaderIsGone, is_never_so_of_files_and_of_what_is_not_open) {
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  EXPECT_FALSE(os::ReaderIsGone(null));
  ::close(null);
  EXPECT_FALSE(os::ReaderIsGone(null));
  EXPECT_FALSE(os::ReaderIsGone(-1));
}

}  // namespace
}  // namespace rastrel::test
