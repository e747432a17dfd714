#include <gtest/gtest.h>

#include <fstream>

#include "rastrel/platform/os/private_directory.h"
#include "server/run/scheduler.h"

namespace rastrel::server {
namespace {

constexpr Time Day = 86'400'000;

class RetentionTest : public testing::Test {
 protected:
  RetentionTest()
      : m_Place(*os::PrivateDirectory::Make("rastrel-retention-")),
        m_Queue(*JobQueue::Open(m_Place.Path())) {
    std::ofstream(m_Place.Path() + "/a.ps") << std::string(600'000, ' ');
  }

  JobId Add(bool ends) {
    JobRequest request;
    request.path = m_Place.Path() + "/a.ps";
    request.device = "Plotter";
    const JobId id = m_Queue->Submit(request).ValueOr(0);
    if (ends) {
      EXPECT_TRUE(m_Queue->Cancel(id));
    }
    return id;
  }

  int Apply(const Retention& retention, Time later = 0) {
    const Time now = m_Queue->List({}).ValueOr({}).front().submitted + later;
    return ApplyRetention(*m_Queue, retention, now, [](const std::string&) {}).ValueOr(-1);
  }

  os::PrivateDirectory m_Place;
  std::unique_ptr<JobQueue> m_Queue;
};

TEST_F(RetentionTest, JobsGoByTheirAge) {
  Add(true);
  const Retention retention{.days = 2, .jobs = 0, .megabytes = 0};
  EXPECT_EQ(Apply(retention, 2 * Day - 60'000), 0);
  EXPECT_EQ(Apply(retention, 2 * Day + 60'000), 1);
}

TEST_F(RetentionTest, OnlyTheNewestOfTheirNumberStay) {
  for (int count = 0; count < 4; ++count) Add(true);
  EXPECT_EQ(Apply({.days = 0, .jobs = 4, .megabytes = 0}), 0);
  EXPECT_EQ(Apply({.days = 0, .jobs = 3, .megabytes = 0}), 1);
  EXPECT_FALSE(*m_Queue->Find(1));
  EXPECT_TRUE(*m_Queue->Find(4));
}

TEST_F(RetentionTest, TheOldestGoUntilTheBytesFit) {
  for (int count = 0; count < 4; ++count) Add(true);
  EXPECT_EQ(Apply({.days = 0, .jobs = 0, .megabytes = 3}), 0);
  EXPECT_EQ(Apply({.days = 0, .jobs = 0, .megabytes = 1}), 3);
}

TEST_F(RetentionTest, JobsThatHaveNotEndedStay) {
  const JobId id = Add(false);
  EXPECT_EQ(Apply({.days = 1, .jobs = 1, .megabytes = 1}, 1000 * Day), 0);
  EXPECT_TRUE(*m_Queue->Find(id));
}

TEST_F(RetentionTest, WithoutLimitsAllStay) {
  Add(true);
  EXPECT_EQ(Apply({.days = 0, .jobs = 0, .megabytes = 0}, 100'000 * Day), 0);
}

}  // namespace
}  // namespace rastrel::server
