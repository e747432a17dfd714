#include "cli/batch/tool_run.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace rastrel::cli {
namespace {

using std::chrono::seconds;

constexpr auto Never = [] { return false; };

Expected<ToolEnd> Shell(const std::string& script, seconds limit = seconds(60),
                        const std::function<bool()>& isStopped = Never) {
  return RunTool("/bin/sh", {"-c", script}, limit, isStopped);
}

TEST(RunTool, both_streams_and_the_status_come_back) {
  const auto end = Shell("echo out; echo error >&2; exit 3");
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->byItself);
  EXPECT_EQ(end->status, 3);
  EXPECT_EQ(end->output, "out\n");
  EXPECT_EQ(end->error, "error\n");
}

TEST(RunTool, a_signal_that_ends_it_is_told) {
  const auto end = Shell("kill -9 $$");
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->byItself);
  EXPECT_EQ(end->status, 9);
}

TEST(RunTool, one_that_hangs_is_killed_after_its_time) {
  const auto end = Shell("exec sleep 1000", seconds(1));
  ASSERT_FALSE(end);
  EXPECT_EQ(Describe(end.Error()), "'/bin/sh' did not end within 1 seconds");
}

TEST(RunTool, one_that_is_to_stop_is_killed) {
  const auto end = Shell("exec sleep 1000", seconds(1000), [] { return true; });
  ASSERT_FALSE(end);
  EXPECT_EQ(end.Error().error, ECANCELED);
}

TEST(RunTool, a_text_beyond_the_limit_is_cut_and_does_not_hold_it_up) {
  const auto end = Shell("head -c 3000000 /dev/zero");
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->IsDone());
  EXPECT_EQ(end->output.size(), std::size_t{1} << 20);
}

TEST(RunTool, what_it_leaves_running_is_not_waited_for) {
  const auto end = Shell("sleep 1000 & echo $!");
  ASSERT_TRUE(end);
  EXPECT_TRUE(end->IsDone());
  ASSERT_TRUE(Shell("kill " + end->output));
}

TEST(RunTool, one_that_is_missing_is_a_failure) {
  const auto end = RunTool("/no-such-program", {}, seconds(60), Never);
  ASSERT_FALSE(end);
  EXPECT_EQ(end.Error().error, ENOENT);
}

}  // namespace
}  // namespace rastrel::cli
