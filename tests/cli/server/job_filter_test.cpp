#include "cli/server/job_filter.h"

#include <gtest/gtest.h>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

Invocation With(OptionId id, const char* value) {
  Invocation invocation;
  invocation.options[id] = value;
  return invocation;
}

std::string RefusalOf(OptionId id, const char* value) {
  try {
    static_cast<void>(FilterOf(With(id, value)));
  } catch (const CommandError& error) {
    return error.what();
  }
  return "";
}

TEST(FilterOf, TakesAllTheNewestFirstWithoutOptions) {
  const server::JobFilter filter = FilterOf({});
  EXPECT_TRUE(filter.states.empty());
  EXPECT_TRUE(filter.descending);
  EXPECT_EQ(filter.orderBy, "id");
  EXPECT_EQ(filter.limit, 100);
}

TEST(FilterOf, ReadsStates) {
  const auto states = FilterOf(With(OptionId::QueueState, "done,failed")).states;
  ASSERT_EQ(states.size(), 2U);
  EXPECT_EQ(states[1], server::JobState::Failed);
  EXPECT_EQ(RefusalOf(OptionId::QueueState, "done,"), "--state done,: there is no state ''");
}

TEST(FilterOf, ADayReachesFromMidnightToMidnight) {
  Invocation invocation = With(OptionId::QueueFrom, "2026-03-31");
  invocation.options[OptionId::QueueUntil] = "2026-03-31";
  const server::JobFilter filter = FilterOf(invocation);
  EXPECT_EQ(TimeText(filter.from), "2026-03-31 00:00:00");
  EXPECT_EQ(TimeText(filter.until), "2026-04-01 00:00:00");
}

TEST(FilterOf, RefusesADayThatIsNone) {
  for (const char* text : {"", "2026", "2026-3-31", "31.3.2026", "2026-0a-01", "+026-03-01"})
    EXPECT_NE(RefusalOf(OptionId::QueueFrom, text).find("YYYY-MM-DD"), std::string::npos) << text;
  for (const char* text : {"2026-04-31", "2026-13-01", "2026-02-29", "2026-00-10"})
    EXPECT_NE(RefusalOf(OptionId::QueueUntil, text).find("no such day"), std::string::npos) << text;
  EXPECT_EQ(RefusalOf(OptionId::QueueUntil, "2028-02-29"), "");
}

TEST(FilterOf, LimitsReachFrom1ToAMillion) {
  for (const char* text : {"1", "2", "999999", "1000000"})
    EXPECT_EQ(RefusalOf(OptionId::QueueLimit, text), "") << text;
  for (const char* text : {"0", "1000001", "-1", "x"})
    EXPECT_NE(RefusalOf(OptionId::QueueLimit, text), "") << text;
}

TEST(FilterOf, SortsByTheColumnsOfTheHelpAlone) {
  EXPECT_EQ(FilterOf(With(OptionId::QueueSort, "pages")).orderBy, "pages");
  EXPECT_NE(RefusalOf(OptionId::QueueSort, "file"), "");
}

}  // namespace
}  // namespace rastrel::cli
