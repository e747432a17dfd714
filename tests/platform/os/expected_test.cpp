#include "rastrel/platform/os/expected.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>

using namespace rastrel;

TEST(Describe, names_the_operation_the_subject_and_the_reason) {
  EXPECT_EQ(Describe({"open", "/a/b", ENOENT}), "open '/a/b': No such file or directory (2)");
  EXPECT_EQ(Describe({"poll", "", EINTR}), "poll: Interrupted system call (4)");
}

TEST(Describe, prefers_its_own_text_to_the_systems) {
  EXPECT_EQ(Describe({.what = "read", .where = "job.ps", .error = EIO, .why = "it ended early"}),
            "read 'job.ps': it ended early");
  EXPECT_EQ(Describe(FailureOf("no window can be shown")), "no window can be shown");
}

TEST(Describe, puts_line_and_column_behind_the_place) {
  EXPECT_EQ(Describe({.where = "a.xml", .why = "no end", .line = 3, .column = 14}),
            "a.xml:3:14: no end");
  EXPECT_EQ(Describe({.where = "a.txt", .why = "no end", .line = 3}), "a.txt:3: no end");
  EXPECT_EQ(Describe({.why = "no end", .line = 3, .column = 14}), "3:14: no end");
}

TEST(Describe, is_one_line_whatever_a_name_holds) {
  EXPECT_EQ(
      Describe({.what = "open", .where = "a\nrastrel: done\x1b[2J\xC2\x9B", .why = "no\nway"}),
      "open 'a\\x0arastrel: done\\x1b[2J\\u009b': no\\x0away");
}

TEST(DescribeError, unknown_numbers_have_a_text_too) {
  EXPECT_EQ(DescribeError(0), "Success");
  EXPECT_EQ(DescribeError(100'000), "Unknown error");
  EXPECT_EQ(DescribeError(-1), "Unknown error");
}

TEST(Expected, is_a_value_or_a_failure) {
  const Expected<int> value = 5;
  ASSERT_TRUE(value);
  EXPECT_EQ(*value, 5);
  const Expected<int> failure = Failure{"read", "x", EIO};
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.Error(), (Failure{"read", "x", EIO}));
}

TEST(Expected, gives_up_a_value_that_can_only_be_moved) {
  Expected<std::unique_ptr<int>> value = std::make_unique<int>(5);
  const std::unique_ptr<int> taken = *std::move(value);
  EXPECT_EQ(*taken, 5);
}

TEST(Expected, of_nothing_is_success_or_a_failure) {
  const Expected<void> success = {};
  EXPECT_TRUE(success);
  const Expected<void> failure = Failure{"write", "x", ENOSPC};
  ASSERT_FALSE(failure);
  EXPECT_EQ(failure.Error().error, ENOSPC);
}
