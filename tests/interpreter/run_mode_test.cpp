#include "interpreter/run_mode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rastrel::interpreter {
namespace {

constexpr std::uint64_t Mebibyte = 1 << 20;

JobLayout Job(JobKind kind, std::uint64_t length, unsigned pages) {
  JobLayout job;
  job.kind = kind;
  job.length = length;
  job.pages = pages;
  return job;
}

// The rule is that of PROGRESS in docs/formats/rip.md.
TEST(PrintMode, counts_pages_if_the_job_says_how_many) {
  const JobLayout job = Job(JobKind::PostScript, 2 * Mebibyte, 4);
  RunProgress progress{.job = job, .sentShare = 0.9};
  EXPECT_DOUBLE_EQ(PrintMode().Share(progress), 0);
  progress.pages = 1;
  progress.pageShare = 0.5;
  EXPECT_DOUBLE_EQ(PrintMode().Share(progress), 1.5 / 4);
  progress.begun = 4;  // of separations, whose pixels don't come as a stream
  EXPECT_DOUBLE_EQ(PrintMode().Share(progress), 3.0 / 4);
}

TEST(PrintMode, counts_the_jobs_bytes_if_it_has_a_mebibyte_and_more) {
  const auto share = [](const JobLayout& job) {
    return PrintMode().Share({.job = job, .sentShare = 0.25});
  };
  EXPECT_DOUBLE_EQ(share(Job(JobKind::PostScript, Mebibyte, 0)), 0.25);
  EXPECT_DOUBLE_EQ(share(Job(JobKind::PostScript, Mebibyte - 1, 0)), 0);
  EXPECT_DOUBLE_EQ(share(Job(JobKind::Pdf, 2 * Mebibyte, 0)), 0);  // it is read, not sent
}

TEST(PictureMode, counts_half_for_the_job_and_half_for_the_page) {
  const JobLayout job = Job(JobKind::Eps, 2 * Mebibyte, 1);
  EXPECT_DOUBLE_EQ(PictureMode().Share({.job = job, .sentShare = 1, .pageShare = 0.5}), 0.75);
}

TEST(RunModes, have_enough_when_their_result_lies_there) {
  const JobLayout job;
  const RunProgress nothing{.job = job};
  const RunProgress page{.job = job, .pages = 1};
  const RunProgress measure{.job = job, .measured = true};
  EXPECT_FALSE(PrintMode().HasEnough(page));
  EXPECT_FALSE(InstallMode().HasEnough(page));
  EXPECT_FALSE(PictureMode().HasEnough(nothing));
  EXPECT_TRUE(PictureMode().HasEnough(page));
  EXPECT_FALSE(MeasureMode().HasEnough(nothing));
  EXPECT_TRUE(MeasureMode().HasEnough(measure));
}

TEST(RunModes, run_their_own_files_of_the_prolog) {
  const auto files = [](const RunMode& mode) {
    return std::vector<std::string>(mode.Script().prologFiles.begin(),
                                    mode.Script().prologFiles.end());
  };
  auto print = files(PrintMode());
  EXPECT_EQ(print.front(), "reports.ps");
  EXPECT_EQ(print.back(), "cutter.ps");
  EXPECT_EQ(files(InstallMode()), print);
  print.emplace_back("picture.ps");
  EXPECT_EQ(files(PictureMode()), print);
  EXPECT_EQ(files(MeasureMode()), (std::vector<std::string>{"reports.ps", "guard.ps", "chosen.ps",
                                                            "picture.ps", "measure.ps"}));
}

}  // namespace
}  // namespace rastrel::interpreter
