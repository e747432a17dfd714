#include <gtest/gtest.h>

#include <ctime>

#include "server/queue/day_time.h"
#include "tests/server/queue/queue_test_support.h"

namespace rastrel::server {
namespace {

class OwnersTest : public QueueTest {};

TEST_F(OwnersTest, a_job_is_found_by_its_owner_and_by_nobody_else) {
  const JobId id = Submit(Request("ada"));
  EXPECT_TRUE(*m_Queue->Find(id, "ada"));
  EXPECT_FALSE(*m_Queue->Find(id, "bob"));
  EXPECT_FALSE(*m_Queue->Find(id, "Ada"));
  EXPECT_TRUE(*m_Queue->Find(id));
  EXPECT_FALSE(*m_Queue->Find(id + 1, "ada"));
}

TEST_F(OwnersTest, events_are_those_of_the_owner) {
  const JobId ada = Submit(Request("ada"));
  const JobId bob = Submit(Request("bob"));
  ASSERT_TRUE(m_Queue->Hold(bob));
  ASSERT_TRUE(m_Queue->Hold(ada));
  const auto own = m_Queue->Events(0, 0, 100, "ada");
  ASSERT_EQ(own->size(), 2U);
  for (const JobEvent& event : *own) EXPECT_EQ(event.job, ada);
  EXPECT_EQ(m_Queue->Events(own->front().number, 0, 100, "ada")->size(), 1U);
  EXPECT_EQ(m_Queue->Events(0, 0, 1, "bob")->size(), 1U);
  EXPECT_EQ(m_Queue->Events(0, bob, 100, "ada")->size(), 0U);
  EXPECT_EQ(m_Queue->Events(0, bob, 100, "bob")->size(), 2U);
  EXPECT_EQ(m_Queue->Events(0, 0, 100)->size(), 4U);
  EXPECT_EQ(m_Queue->LastEvent().ValueOr(0), own->back().number);
}

TEST_F(OwnersTest, the_last_event_of_an_empty_queue_is_none) {
  EXPECT_EQ(m_Queue->LastEvent().ValueOr(-1), 0);
}

TEST_F(OwnersTest, a_mark_changes_with_jobs_and_priorities_of_its_owner) {
  const auto mark = [&](const std::string& owner) { return m_Queue->Mark(owner).ValueOr("?"); };
  const std::string none = mark("ada");
  const JobId first = Submit(Request("ada"));
  const JobId second = Submit(Request("ada"));
  std::string last = mark("ada");
  EXPECT_NE(last, none);
  const JobId other = Submit(Request("bob"));
  ASSERT_TRUE(m_Queue->SetPriority(other, 1));
  EXPECT_EQ(mark("ada"), last);
  EXPECT_NE(mark(""), last);
  // Two that are exchanged show, too.
  ASSERT_TRUE(m_Queue->SetPriority(first, 49));
  ASSERT_TRUE(m_Queue->SetPriority(second, 51));
  EXPECT_NE(mark("ada"), last);
  last = mark("ada");
  ASSERT_TRUE(m_Queue->Hold(first));
  EXPECT_EQ(mark("ada"), last);
  ASSERT_TRUE(m_Queue->Remove(first));
  EXPECT_NE(mark("ada"), last);
}

TEST(BeginOfDay, is_midnight_here) {
  const auto day = BeginOfDay("2026-03-31", 0);
  ASSERT_TRUE(day);
  const std::time_t seconds = *day / 1000;
  std::tm parts{};
  ASSERT_TRUE(::localtime_r(&seconds, &parts));
  EXPECT_EQ(parts.tm_year, 126);
  EXPECT_EQ(parts.tm_mon, 2);
  EXPECT_EQ(parts.tm_mday, 31);
  EXPECT_EQ(parts.tm_hour, 0);
  EXPECT_EQ(*BeginOfDay("2026-03-31", 1), *BeginOfDay("2026-04-01", 0));
}

TEST(BeginOfDay, is_none_for_a_day_that_is_not_there) {
  for (const char* text : {"", "2026", "2026-3-31", "2026-02-29", "2026-04-31", "2026-13-01",
                           "2026-00-10", "2026-03-31x", "2026/03/31", "x026-03-31", " 2026-03-31"})
    EXPECT_FALSE(BeginOfDay(text, 0)) << text;
  EXPECT_TRUE(BeginOfDay("2028-02-29", 0));
  EXPECT_FALSE(BeginOfDay("2026-04-31", 1));
}

}  // namespace
}  // namespace rastrel::server
