#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <string>
#include <vector>

#include "tests/children/queue_fixture.h"

namespace rastrel::jobspool::testing {
namespace {

// A picture of 700 by 700 pixels with cut paths, measured first since it declares no box.
const std::string Job =
    Header("%# KVI_Res= 72\r\n%# KVI_CutLine= RGB, 1.000, 0.000, 0.000\r\n") +
    "%!PS\n0 0 700 700 rectfill 1 0 0 setrgbcolor 1 1 200 { 0 moveto 300 700 lineto stroke } for\n";

const std::vector<std::string> Whole{"vkaaaaaa.cfm", "vkaaaaaa.cut", "vkaaaaaa.ps",
                                     "vkaaaaaa_Color.bmp"};

class KilledQueue : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  void KillAt(int signal, std::mt19937& random, unsigned runs) {
    const std::string file = m_Bench.Job("vkaaaaaa.ps", Job);
    for (unsigned run = 0; run < runs; ++run) {
      const auto moment = static_cast<unsigned>(random() % 130000);
      const ProgramRun outcome =
          m_Bench.RunProgram({m_Bench.Program(), "-ps", "-q", file}, moment, signal);
      SCOPED_TRACE(std::to_string(moment) + " microseconds");
      ASSERT_TRUE(m_Bench.Processes().empty());
      const auto left = m_Bench.Leftovers();
      if (left == Whole) {
        ++m_Whole;
        continue;
      }
      ASSERT_EQ(left, std::vector<std::string>{"vkaaaaaa.ps"}) << outcome.reports;
      EXPECT_FALSE(outcome.Says("INFO: CLQ_success"));
      ++m_Nothing;
    }
  }

  QueueFixture m_Bench;
  unsigned m_Whole = 0;
  unsigned m_Nothing = 0;
};

TEST_F(KilledQueue, leaves_all_or_nothing_at_any_moment) {
  std::mt19937 random(1121);
  KillAt(SIGKILL, random, 40);
  EXPECT_GT(m_Nothing, 0U);
}

TEST_F(KilledQueue, leaves_all_or_nothing_when_it_is_asked_to_end) {
  std::mt19937 random(2211);
  KillAt(SIGTERM, random, 20);
  EXPECT_GT(m_Nothing, 0U);
}

TEST_F(KilledQueue, takes_an_endless_interpreter_with_it) {
  const std::string file = m_Bench.Job("vkaaaaaa.ps", Header() + "%!PS\n{} loop\n");
  for (const char* const first : {"-ps", "-q"}) {
    const std::string second = first == std::string("-ps") ? "-q" : "-ps";
    const ProgramRun outcome = m_Bench.RunProgram({m_Bench.Program(), first, second, file}, 300000);
    EXPECT_FALSE(outcome.byItself);
    EXPECT_TRUE(m_Bench.Processes().empty());
    EXPECT_EQ(m_Bench.Leftovers(), std::vector<std::string>{"vkaaaaaa.ps"});
  }
}

TEST_F(KilledQueue, ends_in_an_endless_job_when_its_host_was_killed) {
  const std::string file = m_Bench.Job("vkaaaaaa.ps", Header() + "%!PS\n{} loop\n");
  const ProgramRun outcome =
      m_Bench.RunAndLeave({m_Bench.Program(), "-ps", "-q", file}, "INTERPRETING");
  EXPECT_NE(outcome.reports.find("INTERPRETING"), std::string::npos);
  EXPECT_NE(outcome.status, 0);
  EXPECT_TRUE(m_Bench.Processes().empty());
  EXPECT_EQ(m_Bench.Leftovers(), std::vector<std::string>{"vkaaaaaa.ps"});
}

}  // namespace
}  // namespace rastrel::jobspool::testing
