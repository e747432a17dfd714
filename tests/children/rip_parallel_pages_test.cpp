// PostScript whose comments name its pages, in several interpreters where the user asks for
// it: pages and status are those of the job as a whole, whatever it does.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const std::string Again =
    "WARNING: The job does not run in parts as it does as a whole; it is run again, and its pages "
    "are made one after the other.";
const std::string Refused =
    "WARNING: The pages are made one after the other, since the job can't be divided: ";

// Six pages; `second` is in the second one, and `fifth` in the fifth.
std::string Document(const std::string& second = "", const std::string& fifth = "") {
  std::string job =
      "%!PS-Adobe-3.0\n%%Pages: 6\n%%EndComments\n/count 0 def\n"
      "/box { 10 10 30 20 rectfill } bind def\n%%EndProlog\n%%BeginSetup\n"
      "<< /PageSize [100 90] >> setpagedevice /letters 20 string def\n%%EndSetup\n";
  for (int page = 1; page <= 6; ++page) {
    const std::string number = std::to_string(page);
    job += "%%Page: " + number + " " + number + "\n/level save def\n0." + number +
           " 0.5 1 setrgbcolor box " + (page == 2 ? second : "") + (page == 5 ? fifth : "") +
           "\nshowpage\nlevel restore\n";
  }
  return job + "%%Trailer\n%%EOF\n";
}

std::string Bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::map<std::string, std::string> FilesOf(const ProgramRun& run) {
  std::map<std::string, std::string> files;
  for (const std::string& page : RipFixture::PagesOf(run)) {
    for (const auto& file : fs::directory_iterator(page))
      files[fs::path(page).filename().string() + "/" + file.path().filename().string()] =
          Bytes(file.path());
  }
  return files;
}

class ParallelPages : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  ProgramRun RunAs(const char* parallel, const std::string& job, const std::string& prefix = "") {
    m_Bench.Set("RASTREL_RIP_PARALLEL_PAGES", parallel);
    m_Bench.Set("RASTREL_RIP_PROCESSES", "3");
    return m_Bench.Run({prefix.empty() ? m_Bench.Prefix() : prefix, m_Bench.File("job.ps", job)});
  }
  // Runs the job as a whole and in parts. Both are to have the same pages and the same end.
  // Returns the run in parts.
  ProgramRun ExpectSame(const std::string& job, const std::string& prefix = "") {
    const ProgramRun whole = RunAs("0", job, prefix);
    ProgramRun parts = RunAs("1", job, prefix);
    EXPECT_EQ(parts.status, whole.status) << parts.reports;
    EXPECT_TRUE(FilesOf(parts) == FilesOf(whole)) << parts.reports;
    EXPECT_EQ(RipFixture::PagesOf(parts).size(), RipFixture::PagesOf(whole).size());
    EXPECT_EQ(m_Bench.Processes(), Names());
    return parts;
  }
  void ExpectAgain(const std::string& job) {
    const ProgramRun parts = ExpectSame(job);
    EXPECT_TRUE(parts.Says(Again)) << parts.reports;
  }
  RipFixture m_Bench;
};

// How often a line is in the reports.
int Times(const ProgramRun& run, const std::string& line) {
  int times = 0;
  for (std::size_t at = run.reports.find(line + "\n"); at != std::string::npos;
       at = run.reports.find(line + "\n", at + 1))
    ++times;
  return times;
}

TEST_F(ParallelPages, of_a_sound_job_are_those_of_the_whole) {
  const ProgramRun parts = ExpectSame(Document());
  EXPECT_EQ(parts.status, 0);
  EXPECT_EQ(RipFixture::PagesOf(parts).size(), 6U);
  EXPECT_EQ(parts.reports.find("WARNING"), std::string::npos) << parts.reports;
  std::size_t at = 0;
  for (const std::string line : {"INFO: INITIALISING\n", "print mode TIFF/tiff default.ps\n",
                                 "INFO: READY\n", "INFO: INTERPRETING\n", "INFO: CONVERTING\n",
                                 "PAGE: 1\n", "PAGE: 2\n", "PAGE: 6\n", "INFO: SPOOLING\n"}) {
    const std::size_t next = parts.reports.find(line, at);
    ASSERT_NE(next, std::string::npos) << line << parts.reports;
    EXPECT_EQ(parts.reports.find(line, next + 1), std::string::npos) << line << parts.reports;
    at = next;
  }
}

// Such a page differs without the second, and nothing reports it: so this is the user's choice.
TEST_F(ParallelPages, that_use_earlier_ones_in_silence_differ_from_those_of_the_whole) {
  const std::string job =
      Document("letters 0 65 put", "letters 0 get 0 gt { 1 0 0 setrgbcolor box } if");
  const auto whole = FilesOf(RunAs("0", job));
  const auto parts = FilesOf(RunAs("1", job));
  ASSERT_EQ(parts.size(), whole.size());
  for (const auto& [name, bytes] : whole) {
    if (!name.ends_with("page.tif")) continue;
    EXPECT_EQ(parts.at(name) == bytes, name != "p0005/page.tif") << name;
  }
}

TEST_F(ParallelPages, in_gray_and_fitted_to_a_size_are_those_of_the_whole) {
  const std::string prefix = m_Bench.File(
      "job.psp", "%!PS\nserverdict begin 0 exitserver\n1Color /ConcinnaA5 SetScaleTarget\n");
  const ProgramRun parts = ExpectSame(Document(), prefix);
  EXPECT_EQ(parts.status, 0) << parts.reports;
  EXPECT_EQ(parts.reports.find(Again), std::string::npos) << parts.reports;
}

// Strings keep their letters through a restore, so a page can count on those of an earlier one.
TEST_F(ParallelPages, that_report_on_earlier_ones_are_run_again_as_a_whole) {
  ExpectAgain(Document("letters 0 65 put", "letters 0 get ="));
  ExpectAgain(Document("(page two) =", ""));
}

TEST_F(ParallelPages, that_need_earlier_ones_are_run_again_as_a_whole) {
  // 100 divided by a letter of the second page: without it there is an error.
  ExpectAgain(Document("letters 0 65 put", "100 letters 0 get idiv pop"));
}

TEST_F(ParallelPages, of_another_number_are_run_again_as_a_whole) {
  ExpectAgain(Document("showpage", ""));
  ExpectAgain(Document("", "showpage"));
  ExpectAgain(Document("/showpage { } def", ""));
}

TEST_F(ParallelPages, with_an_error_fail_as_the_whole) {
  for (const std::string& job : {Document("nosuchname", ""), Document("", "nosuchname")}) {
    const ProgramRun parts = ExpectSame(job);
    EXPECT_EQ(parts.status, 1) << parts.reports;
    EXPECT_EQ(Times(parts, "ERROR: PostScript error: /undefined in nosuchname."), 1)
        << parts.reports;
    EXPECT_EQ(Times(parts, "INFO: INTERPRETING"), 1) << parts.reports;
    EXPECT_EQ(Times(parts, "print mode TIFF/tiff default.ps"), 1) << parts.reports;
    EXPECT_EQ(m_Bench.Remains(), Names());
  }
}

TEST_F(ParallelPages, that_can_not_be_told_apart_are_made_one_after_the_other_with_the_reason) {
  std::string unsound = Document();
  unsound.replace(unsound.find("%%Pages: 6"), 10, "%%Pages: 7");
  const ProgramRun counted = ExpectSame(unsound);
  EXPECT_TRUE(counted.Says(Refused + "its comments count 7 pages and name 6.")) << counted.reports;
  const ProgramRun plain = ExpectSame("%!PS\nshowpage showpage\n");
  EXPECT_TRUE(
      plain.Says(Refused + "its first line does not say that it keeps to the rules of comments."))
      << plain.reports;
  const ProgramRun cut =
      ExpectSame(Document(), m_Bench.File("job.psp",
                                          "%!PS\nserverdict begin 0 exitserver\n"
                                          "false 1 0 0 /DeviceRGB $setcutter\n"));
  EXPECT_TRUE(cut.Says(Refused + "a cut colour is taken out of all its pages.")) << cut.reports;
}

TEST_F(ParallelPages, are_made_one_after_the_other_by_one_interpreter_without_a_word) {
  m_Bench.Set("RASTREL_RIP_PARALLEL_PAGES", "1");
  m_Bench.Set("RASTREL_RIP_PROCESSES", "1");
  const ProgramRun run = m_Bench.Run({m_Bench.Prefix(), m_Bench.File("job.ps", Document())});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.reports.find("WARNING"), std::string::npos) << run.reports;
}

TEST_F(ParallelPages, that_are_endless_end_with_the_jobs_time) {
  m_Bench.Set("RASTREL_RIP_TIMEOUT", "3");
  const ProgramRun run = RunAs("1", Document("", "{ } loop"));
  EXPECT_EQ(run.status, 3);
  EXPECT_TRUE(
      run.Says("ERROR: The job took longer than 3 seconds and was ended (RASTREL_RIP_TIMEOUT)."))
      << run.reports;
  EXPECT_EQ(m_Bench.Remains(), Names());
  EXPECT_EQ(m_Bench.Processes(), Names());
}

TEST_F(ParallelPages, killed_leave_nothing) {
  m_Bench.Set("RASTREL_RIP_PARALLEL_PAGES", "1");
  m_Bench.Set("RASTREL_RIP_PROCESSES", "3");
  const std::vector<std::string> paths{m_Bench.Prefix(),
                                       m_Bench.File("job.ps", Document("", "{ } loop"))};
  for (unsigned moment = 20'000; moment < 400'000; moment += 40'000) {
    EXPECT_EQ(m_Bench.RunAndKill(paths, moment).output, "");
    EXPECT_EQ(m_Bench.Remains(), Names());
    EXPECT_EQ(m_Bench.Processes(), Names());
  }
}

}  // namespace
}  // namespace rastrel::corerast::testing
