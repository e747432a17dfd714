#include "rastrel/job/log_entry.h"

#include <gtest/gtest.h>

namespace {

using rastrel::job::LogEntryHead;

TEST(LogEntry, the_head_is_date_time_and_thread) {
  EXPECT_EQ(LogEntryHead({2026, 2, 4, 9, 8, 7}, 512), "[04/02/2026, 09:08:07][ 512]");
  EXPECT_EQ(LogEntryHead({1999, 12, 31, 23, 59, 59}, 0), "[31/12/1999, 23:59:59][   0]");
}

TEST(LogEntry, the_thread_is_right_aligned_in_four_and_never_cut) {
  EXPECT_EQ(LogEntryHead({2000, 1, 1, 0, 0, 0}, 7), "[01/01/2000, 00:00:00][   7]");
  EXPECT_EQ(LogEntryHead({2000, 1, 1, 0, 0, 0}, 9999), "[01/01/2000, 00:00:00][9999]");
  EXPECT_EQ(LogEntryHead({2000, 1, 1, 0, 0, 0}, 12345), "[01/01/2000, 00:00:00][12345]");
  EXPECT_EQ(LogEntryHead({2000, 1, 1, 0, 0, 0}, 4294967295U), "[01/01/2000, 00:00:00][4294967295]");
}

TEST(LogEntry, a_moment_that_could_not_be_had_is_left_out) {
  EXPECT_EQ(LogEntryHead({}, 512), "[ 512]");
}

}  // namespace
