#include "cli/server/child_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

// Programs are looked for in a directory of the installation: from there to the shell.
const std::string Shell = "../../../../../../../../../../../../../../../../bin/sh";

Expected<LimitedRun> RunScript(const std::string& script, std::chrono::milliseconds limit = 60s,
                               const os::ProcessLimits& limits = {}) {
  return RunLimited(Shell, {"sh", "-c", script}, os::Deadline::After(limit), limits);
}

TEST(RunLimited, has_both_streams_and_the_end) {
  const auto run = RunScript("echo out; echo err >&2; exit 3");
  ASSERT_TRUE(run) << Describe(run.Error());
  EXPECT_EQ(run->output, "out\nerr\n");
  EXPECT_TRUE(run->state.byItself);
  EXPECT_EQ(run->state.status, 3);
}

TEST(RunLimited, ends_a_program_whose_time_is_over_whether_it_writes_or_not) {
  for (const char* script : {"exec sleep 1000", "exec >&-; exec 2>&-; exec sleep 1000",
                             "while :; do echo x; sleep 0.01; done"}) {
    const auto run = RunScript(script, 300ms);
    ASSERT_FALSE(run) << script;
    EXPECT_NE(run.Error().why.find("has not ended in time"), std::string::npos);
  }
}

TEST(RunLimited, ends_a_program_that_writes_without_end) {
  const auto run = RunScript("exec yes");
  ASSERT_FALSE(run);
  EXPECT_NE(run.Error().why.find("wrote too much"), std::string::npos);
}

TEST(RunLimited, a_program_has_no_more_than_its_limits) {
  const auto run = RunScript(
      "for i in $(seq 1000); do [ $(ulimit -f) = 100 ] && break; sleep 0.05; done; ulimit -f; "
      "ulimit -t",
      60s, {.processorSeconds = 5, .fileBytes = 51200});
  ASSERT_TRUE(run);
  // Blocks of 512 bytes, and seconds.
  EXPECT_EQ(run->output, "100\n5\n");
}

TEST(RunLimited, a_program_that_is_not_there_is_a_failure) {
  EXPECT_FALSE(RunLimited("rastrel-nothing", {"x"}, os::Deadline::After(1s), {}));
}

}  // namespace
}  // namespace rastrel::cli
