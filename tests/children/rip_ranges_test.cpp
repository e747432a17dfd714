// PDF of many pages, whose later pages further interpreters make: whatever happens, pages, reports
// and status are those of one interpreter.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "interpreter/interpreter.h"
#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr unsigned PageCount = 20;

// Small pages of different sizes with text, lines and, on some, a spot color. The fifth has a
// picture of 6 MB, so that the file is work enough for three interpreters.
std::string TwentyPages() {
  return "%!PS\n/Helvetica findfont 14 scalefont setfont\n"
         "1 1 20 { /p exch def << /PageSize [100 p 3 mod 20 mul add 90] >> setpagedevice\n"
         "p 32 div 0.25 0.5 setrgbcolor 10 p 2 mul 30 20 rectfill\n"
         "p 4 mod 0 eq { [/Separation (Gold) /DeviceCMYK { 0 0 3 -1 roll 0 }] setcolorspace\n"
         "0.8 setcolor 50 10 30 30 rectfill } if\n"
         "0 setgray 0.3 setlinewidth 5 5 moveto 90 p 4 mul lineto stroke\n"
         "10 70 moveto (Page ) show p 4 string cvs show\n"
         "p 5 eq { gsave 60 50 translate 30 30 scale /row 6000 string def 0 1 5999 { row exch dup "
         "37 mul 251 mod put } for\n"
         "2000 1000 8 [2000 0 0 1000 0 0] { row } false 3 colorimage grestore } if\n"
         "showpage } for\n";
}

std::string Bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The date in a plane's file, and the check sum that follows from it, are the run's own.
std::string WithoutDates(const fs::path& path) {
  static const std::regex Date("[0-9]{4}:[0-9]{2}:[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}");
  static const std::regex Sum("[0-9a-f]{32}");
  const std::string bytes = Bytes(path);
  if (path.extension() == ".tif") return std::regex_replace(bytes, Date, "");
  if (path.filename() == ".info") return std::regex_replace(bytes, Sum, "");
  return bytes;
}

// All files of the pages, by the page's place in the list and the file's name.
std::map<std::string, std::string> FilesOf(const ProgramRun& run) {
  std::map<std::string, std::string> files;
  for (const std::string& page : RipFixture::PagesOf(run)) {
    for (const auto& file : fs::directory_iterator(page)) {
      files[fs::path(page).filename().string() + "/" + file.path().filename().string()] =
          WithoutDates(file.path());
    }
  }
  return files;
}

// The reports but for those of progress, which depend on the clock. Pixels and messages come by two
// pipes, so the lines of pages are put after all others.
std::string ReportsOf(const ProgramRun& run) {
  std::istringstream lines(run.reports);
  std::string text;
  std::string pages;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("PROGRESS:")) continue;
    (line.starts_with("PAGE:") ? pages : text) += line + "\n";
  }
  return text + pages;
}

class RipRanges : public ::testing::Test {
 protected:
  void SetUp() override { REQUIRE_GHOSTSCRIPT(); }

  // Makes a PDF of a PostScript job, with these options besides.
  std::string Pdf(const std::string& options = "", const std::string& job = TwentyPages()) const {
    const std::string source = m_Bench.File("source.ps", job);
    const std::string pdf = m_Bench.File("job.pdf", "");
    const std::string command =
        "gs -q -dBATCH -dNOPAUSE -dSAFER -sDEVICE=pdfwrite -dEncodeColorImages=false "
        "-dDownsampleColorImages=false " +
        options + " -o '" + pdf + "' '" + source + "' </dev/null >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return pdf;
  }
  ProgramRun RunWith(const char* processes, const std::string& prefix, const std::string& pdf) {
    m_Bench.Set("RASTREL_RIP_PROCESSES", processes);
    return m_Bench.Run({prefix, pdf});
  }
  // Runs the job with one interpreter and with several; both are to be the same in all.
  void ExpectSame(const std::string& prefix, const std::string& pdf, const char* processes = "3") {
    const ProgramRun one = RunWith("1", prefix, pdf);
    const ProgramRun several = RunWith(processes, prefix, pdf);
    EXPECT_EQ(several.status, one.status);
    EXPECT_EQ(ReportsOf(several), ReportsOf(one));
    EXPECT_TRUE(FilesOf(several) == FilesOf(one));
    EXPECT_EQ(RipFixture::PagesOf(several).size(), RipFixture::PagesOf(one).size());
    EXPECT_EQ(m_Bench.Processes(), Names());
  }
  // Puts a script in the interpreter's place that does this before all others than the first
  // interpreter of a job begin.
  void WriteInterpreter(const std::string& ofLaterPages) {
    const std::string directory = fs::path(m_Bench.File("bin/gs", "")).parent_path();
    std::ofstream(directory + "/gs")
        << "#!/bin/sh\ncase \"$*\" in\n*-dFirstPage=*)\n"
        << ofLaterPages << "\n;;\nesac\nexec " << interpreter::FindGhostscript() << " \"$@\"\n";
    chmod((directory + "/gs").c_str(), 0755);
    m_Bench.Set("PATH", directory + ":/usr/bin:/bin");
  }
  // How many of the pages differ from those of one interpreter without the script.
  unsigned DifferentPages(const ProgramRun& run, const ProgramRun& other) {
    const auto files = FilesOf(run);
    unsigned different = 0;
    for (const auto& [name, bytes] : FilesOf(other)) {
      if (!name.ends_with("page.tif")) continue;
      const auto found = files.find(name);
      if (found == files.end() || found->second != bytes) ++different;
    }
    return different;
  }

  RipFixture m_Bench;
};

TEST_F(RipRanges, in_rgb_have_the_bytes_and_reports_of_one_interpreter) {
  const std::string pdf = Pdf();
  for (const char* processes : {"2", "3", "16"}) ExpectSame(m_Bench.Prefix(), pdf, processes);
}

TEST_F(RipRanges, in_separations_have_the_planes_of_one_interpreter) {
  ExpectSame(m_Bench.Prefix("CMYK/300 dpi.ps"), Pdf());
  ExpectSame(m_Bench.Prefix("Hexachrome/300 dpi.ps"), Pdf());
}

TEST_F(RipRanges, in_gray_that_are_fitted_have_the_bytes_of_one_interpreter) {
  ExpectSame(m_Bench.File("job.psp",
                          "%!PS\nserverdict begin 0 exitserver\n1Color 90 90 SetXYResolution\n"
                          "/ConcinnaA5 SetScaleTarget\n"),
             Pdf());
}

TEST_F(RipRanges, are_listed_in_the_order_of_the_pages) {
  const ProgramRun run = RunWith("3", m_Bench.Prefix(), Pdf());
  const Names pages = RipFixture::PagesOf(run);
  ASSERT_EQ(pages.size(), PageCount);
  std::size_t at = 0;
  for (unsigned page = 1; page <= PageCount; ++page) {
    EXPECT_EQ(CheckedInfo(pages[page - 1]).page, page);
    EXPECT_EQ(fs::path(pages[page - 1]).parent_path(), fs::path(pages[0]).parent_path());
    const std::string line = "PAGE: " + std::to_string(page) + "\n";
    const std::size_t next = run.reports.find(line, at);
    ASSERT_NE(next, std::string::npos) << line << run.reports;
    at = next;
  }
  EXPECT_NE(run.reports.find("INFO: SPOOLING\n", at), std::string::npos) << run.reports;
}

TEST_F(RipRanges, of_a_locked_pdf_are_opened_by_the_same_password) {
  m_Bench.Set("RASTREL_RIP_PASSWORD_FILE", m_Bench.File("password", "shop\n"));
  ExpectSame(m_Bench.Prefix(),
             Pdf("-sOwnerPassword=owner -sUserPassword=shop -dEncryptionR=3 -dKeyLength=128"));
}

// Smoothed letters show who has made a page.
TEST_F(RipRanges, are_made_by_further_interpreters) {
  const std::string pdf = Pdf();
  const ProgramRun one = RunWith("1", m_Bench.Prefix(), pdf);
  WriteInterpreter("set -- -dTextAlphaBits=4 -dGraphicsAlphaBits=4 \"$@\"");
  EXPECT_EQ(DifferentPages(RunWith("1", m_Bench.Prefix(), pdf), one), 0U);
  const unsigned ofTwo = DifferentPages(RunWith("2", m_Bench.Prefix(), pdf), one);
  const unsigned ofThree = DifferentPages(RunWith("3", m_Bench.Prefix(), pdf), one);
  EXPECT_GT(ofTwo, 0U);  // fewer on a busy machine, where the others start late
  EXPECT_LT(ofTwo, 11U);
  EXPECT_GT(ofThree, 0U);
  EXPECT_LT(ofThree, 15U);
}

// The older PDF code, which takes cut paths out, is left with all pages.
TEST_F(RipRanges, are_not_made_where_a_cut_color_is_set) {
  const std::string pdf = Pdf();
  const std::string prefix = m_Bench.File(
      "job.psp", "%!PS\nserverdict begin 0 exitserver\nfalse 1 0 0 /DeviceRGB $setcutter\n");
  const ProgramRun one = RunWith("1", prefix, pdf);
  WriteInterpreter("exit 1");
  const ProgramRun several = RunWith("3", prefix, pdf);
  EXPECT_EQ(several.status, 0) << several.reports;
  EXPECT_EQ(DifferentPages(several, one), 0U);
}

TEST_F(RipRanges, of_which_one_interpreter_crashes_are_made_by_the_first) {
  const std::string pdf = Pdf();
  const ProgramRun one = RunWith("1", m_Bench.Prefix(), pdf);
  for (const char* misfortune :
       {"kill -SEGV $$", "kill -KILL $$", "exit 1", "exit 0", "echo 'Error: /oops' >&2; exit 0",
        "case \"$*\" in *-dLastPage=20*) kill -SEGV $$;; esac",
        "case \"$*\" in *-dLastPage=20*) ;; *) exit 1;; esac"}) {
    WriteInterpreter(misfortune);
    const ProgramRun several = RunWith("3", m_Bench.Prefix(), pdf);
    EXPECT_EQ(several.status, 0) << misfortune << several.reports;
    EXPECT_EQ(ReportsOf(several), ReportsOf(one)) << misfortune;
    EXPECT_TRUE(FilesOf(several) == FilesOf(one)) << misfortune;
    EXPECT_EQ(m_Bench.Processes(), Names());
  }
}

// Breaks the description of that page, counted from 1.
void Spoil(const std::string& pdf, unsigned page) {
  std::string bytes = Bytes(pdf);
  const std::string box = "/MediaBox [0 0";
  std::size_t at = bytes.find(box);
  for (unsigned before = 1; before < page; ++before) at = bytes.find(box, at + 1);
  ASSERT_NE(at, std::string::npos) << page;
  bytes.replace(at, box.size(), "/MediaBox (0 0");
  std::ofstream(pdf, std::ios::binary) << bytes;
}

TEST_F(RipRanges, of_which_a_page_is_damaged_have_the_warnings_of_one_interpreter) {
  for (const unsigned page : {1U, 2U, PageCount}) {
    const std::string pdf = Pdf("-dCompressPages=false");
    Spoil(pdf, page);
    const ProgramRun one = RunWith("1", m_Bench.Prefix(), pdf);
    EXPECT_NE(one.reports.find("\ngs: "), std::string::npos) << one.reports;
    ExpectSame(m_Bench.Prefix(), pdf);
  }
}

TEST_F(RipRanges, whose_file_is_cut_off_have_the_warnings_of_one_interpreter) {
  const std::string pdf = Pdf();
  for (const double part : {0.999, 0.99, 0.6, 0.2}) {
    const std::string bytes = Bytes(Pdf());
    std::ofstream(pdf, std::ios::binary)
        << bytes.substr(0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * part));
    ExpectSame(m_Bench.Prefix(), pdf);
  }
}

// 20 pages of 100 to 140 by 90 pixels are 0.6 MiB.
TEST_F(RipRanges, that_are_too_large_together_fail_as_with_one_interpreter) {
  const std::string pdf = Pdf();
  const std::string prefix = m_Bench.File(
      "job.psp", "%!PS\nserverdict begin 0 exitserver\n3Color 144 144 SetXYResolution\n");
  for (const char* size : {"1", "2", "3"}) {
    m_Bench.Set("RASTREL_RIP_SIZE", size);
    ExpectSame(prefix, pdf);
  }
  m_Bench.Set("RASTREL_RIP_SIZE", "1");
  const ProgramRun run = RunWith("3", prefix, pdf);
  EXPECT_EQ(run.status, 3);
  EXPECT_TRUE(run.Says("ERROR: The job's pages take more than 1 MiB (RASTREL_RIP_SIZE)."))
      << run.reports;
}

TEST_F(RipRanges, killed_at_any_moment_leave_no_file_and_no_process) {
  const std::vector<std::string> paths{m_Bench.Prefix(), Pdf()};
  m_Bench.Set("RASTREL_RIP_PROCESSES", "3");
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(m_Bench.Run(paths).status, 0);
  auto latest = static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(
                                        std::chrono::steady_clock::now() - start)
                                        .count());
  const std::size_t whole = m_Bench.Remains().size();
  std::mt19937 random(20261122);
  unsigned killed = 0;
  for (unsigned run = 0; killed < 15 && run < 300; ++run) {
    std::uniform_int_distribution<unsigned> moment(0, static_cast<unsigned>(latest));
    const std::size_t before = m_Bench.Remains().size();
    const ProgramRun outcome = m_Bench.RunAndKill(paths, moment(random));
    const std::size_t added = m_Bench.Remains().size() - before;
    if (added == 0) {
      EXPECT_EQ(outcome.status, SIGKILL);
      ++killed;
    } else {
      EXPECT_EQ(added, whole);
      EXPECT_EQ(RipFixture::PagesOf(outcome).size(), PageCount);
      latest = std::max(1000.0, latest * 0.8);
    }
    EXPECT_EQ(m_Bench.Processes(), Names());
  }
  EXPECT_EQ(killed, 15U);
}

TEST_F(RipRanges, end_when_nobody_reads_the_reports) {
  const std::string pdf = Pdf();
  WriteInterpreter("sleep 100");  // so that the first interpreter waits for it
  m_Bench.Set("RASTREL_RIP_PROCESSES", "2");
  const ProgramRun outcome = m_Bench.RunAndLeave(
      {m_Bench.RipDirectory() + "/corerast.exe", m_Bench.Prefix(), pdf}, "PAGE: 10\n");
  EXPECT_NE(outcome.status, 0);
  EXPECT_EQ(m_Bench.Remains(), Names());
  EXPECT_EQ(m_Bench.Processes(), Names());
}

TEST_F(RipRanges, that_are_waited_for_count_for_the_jobs_time) {
  const std::string pdf = Pdf();
  WriteInterpreter("sleep 100");
  m_Bench.Set("RASTREL_RIP_TIMEOUT", "3");
  const ProgramRun run = RunWith("2", m_Bench.Prefix(), pdf);
  EXPECT_EQ(run.status, 3);
  EXPECT_TRUE(
      run.Says("ERROR: The job took longer than 3 seconds and was ended (RASTREL_RIP_TIMEOUT)."))
      << run.reports;
  EXPECT_EQ(m_Bench.Remains(), Names());
  EXPECT_EQ(m_Bench.Processes(), Names());
}

}  // namespace
}  // namespace rastrel::corerast::testing
