// The RIP killed at any moment, as the library does it to end a job.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <random>
#include <string>
#include <vector>

#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

using Names = std::vector<std::string>;

// Three pages with enough on them to take a while.
const std::string Job =
    "%!PS\n%%Pages: 3\n1 1 3 { pop\n"
    "1 1 400 { dup 400 div 0.5 1 sethsbcolor 300 400 3 -1 roll 0 360 arc stroke } for\n"
    "showpage } for\n";

// Kills runs of a mode at random moments, until so many were killed. The moments follow the runs: a
// machine that is busier at first must not put them all after the end. After each there is nothing
// left, or, if the RIP had handed over, all of it.
void KillAtRandomMoments(const std::string& mode, unsigned runs) {
  const RipFixture bench;
  const std::vector<std::string> paths{bench.Prefix(mode), bench.File("job.ps", Job)};
  const auto start = std::chrono::steady_clock::now();
  const ProgramRun whole = bench.Run(paths);
  const auto took = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - start);
  ASSERT_EQ(whole.status, 0) << whole.reports;
  const std::size_t wholeRemains = bench.Remains().size();

  std::mt19937 random(20261120);
  auto latest = static_cast<double>(took.count());
  unsigned killed = 0;
  for (unsigned run = 0; killed < runs && run < 20 * runs; ++run) {
    std::uniform_int_distribution<unsigned> moment(0, static_cast<unsigned>(latest));
    const std::size_t before = bench.Remains().size();
    const ProgramRun outcome = bench.RunAndKill(paths, moment(random));
    const std::size_t added = bench.Remains().size() - before;
    if (added != 0) {
      EXPECT_EQ(added, wholeRemains);
      const Names pages = RipFixture::PagesOf(outcome);
      EXPECT_EQ(pages.size(), 3U);
      for (const std::string& page : pages) EXPECT_GT(CheckedInfo(page).width, 0U);
      latest = std::max(1000.0, latest * 0.8);
    } else {
      EXPECT_EQ(outcome.status, SIGKILL);
      ++killed;
      latest *= 1.05;
    }
    EXPECT_EQ(bench.Processes(), Names{});
  }
  EXPECT_EQ(killed, runs) << "the runs ended before they could be killed";
}

TEST(KilledRip, leaves_no_file_and_no_process) {
  REQUIRE_GHOSTSCRIPT();
  KillAtRandomMoments("RGB/300 dpi.ps", 30);
}

TEST(KilledRip, leaves_no_separation_either) {
  REQUIRE_GHOSTSCRIPT();
  KillAtRandomMoments("CMYK/300 dpi.ps", 10);
}

TEST(KilledRip, in_an_endless_job_takes_the_interpreter_with_it) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome =
      bench.RunAndKill({bench.Prefix(), bench.File("job.ps", "%!PS\n{} loop\n")}, 400000);
  EXPECT_EQ(outcome.status, SIGKILL);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(bench.Remains(), Names{});
  EXPECT_EQ(bench.Processes(), Names{});
}

TEST(LeftRip, in_an_endless_job_ends_when_nobody_reads_its_reports) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const ProgramRun outcome =
      bench.RunAndLeave({bench.RipDirectory() + "/corerast.exe", "-M", "-Q", "-m128",
                         bench.Prefix(), bench.File("job.ps", "%!PS\n{} loop\n")},
                        "INTERPRETING");
  EXPECT_NE(outcome.reports.find("INTERPRETING"), std::string::npos);
  EXPECT_NE(outcome.status, 0);
  EXPECT_EQ(bench.Remains(), Names{});
  EXPECT_EQ(bench.Processes(), Names{});
}

}  // namespace
}  // namespace rastrel::corerast::testing
