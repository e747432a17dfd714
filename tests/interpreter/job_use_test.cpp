#include "interpreter/job_use.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

namespace rastrel::interpreter {
namespace {

TEST(JobUse, adds_up_all_interpreters) {
  JobUse use(100);
  const auto one = use.Join();
  const auto other = use.Join();
  static_cast<void>(use.Report(one, {{1, 2}, {3, 4}, 5, 6}));
  const RunUse sum = use.Report(other, {{10, 20}, {30, 40}, 50, 60});
  EXPECT_EQ(sum.work.bytes, 11U);
  EXPECT_EQ(sum.work.files, 22U);
  EXPECT_EQ(sum.planes.bytes, 33U);
  EXPECT_EQ(sum.planes.files, 44U);
  EXPECT_EQ(sum.memory, 55U);
  EXPECT_EQ(sum.nanoseconds, 66U);
  EXPECT_EQ(use.MemoryLimit(), 100U);
  use.AddPages(one, 7);
  use.AddPages(other, 8);
  use.AddPages(one, 1);
  EXPECT_EQ(use.PagesOf(one), 8U);
  EXPECT_EQ(use.PagesOf(other), 8U);
  EXPECT_EQ(use.PagesOfAll(), 16U);
}

// Its pages are made again by another; its time was spent all the same.
TEST(JobUse, forgets_all_but_the_time_of_one_that_was_given_up) {
  JobUse use(0);
  const auto one = use.Join();
  const auto other = use.Join();
  use.AddPages(other, 8);
  static_cast<void>(use.Report(other, {{10, 20}, {30, 40}, 50, 60}));
  use.Drop(other);
  const RunUse sum = use.Report(one, {{1, 2}, {3, 4}, 5, 6});
  EXPECT_EQ(sum.work.bytes, 1U);
  EXPECT_EQ(sum.planes.files, 4U);
  EXPECT_EQ(sum.memory, 5U);
  EXPECT_EQ(sum.nanoseconds, 66U);
  EXPECT_EQ(use.PagesOfAll(), 0U);
}

TEST(JobUse, of_a_process_is_what_the_system_says) {
  const std::vector<char> touched(32 << 20, 'x');
  EXPECT_GT(OwnMemoryOf(getpid()), touched.size());
  EXPECT_GT(ProcessorTimeOf(getpid()), 0U);
  EXPECT_EQ(OwnMemoryOf(-1), 0U);
  EXPECT_EQ(ProcessorTimeOf(-1), 0U);
}

}  // namespace
}  // namespace rastrel::interpreter
