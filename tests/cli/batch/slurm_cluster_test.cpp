#include "cli/batch/slurm_cluster.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(ReadTaskStates, a_row_has_number_state_and_the_status_that_wait_returns) {
  const auto states = ReadTaskStates(
      "                   2             PENDING                   0\n"
      "                   0              FAILED               18176\n"
      "                   1              FAILED                   9\n"
      "                  30           COMPLETED                   0\n");
  ASSERT_EQ(states.size(), 4U);
  EXPECT_FALSE(states.at(2).isOver);
  EXPECT_TRUE(states.at(0).isOver);
  EXPECT_FALSE(states.at(0).bySignal);
  EXPECT_EQ(states.at(0).status, 71);  // 71 * 256
  EXPECT_TRUE(states.at(1).bySignal);
  EXPECT_EQ(states.at(1).status, 9);
  EXPECT_EQ(states.at(30).name, "COMPLETED");
}

TEST(ReadTaskStates, a_task_that_ends_or_waits_again_is_not_over) {
  for (const char* state : {"RUNNING", "COMPLETING", "CONFIGURING", "SUSPENDED", "REQUEUED"})
    EXPECT_FALSE(ReadTaskStates(std::string("0 ") + state + " 0").at(0).isOver) << state;
  for (const char* state : {"CANCELLED", "NODE_FAIL", "OUT_OF_MEMORY", "PREEMPTED", "TIMEOUT"})
    EXPECT_TRUE(ReadTaskStates(std::string("0 ") + state + " 0").at(0).isOver) << state;
}

TEST(ReadTaskStates, other_rows_are_passed_over) {
  EXPECT_TRUE(ReadTaskStates("").empty());
  EXPECT_TRUE(ReadTaskStates("N/A FAILED 0\n0 FAILED\n0 FAILED x\n0 A B 0\n-1 FAILED 0\n").empty());
}

}  // namespace
}  // namespace rastrel::cli
