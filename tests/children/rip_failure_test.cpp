// The RIP on input, jobs and surroundings that fail it, and on jobs that mean harm.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "rastrel/platform/os/owner.h"
#include "tests/children/rip_fixture.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const std::string RedPage =
    "<< /PageSize [72 72] >> setpagedevice 1 0 0 setrgbcolor 0 0 72 72 rectfill showpage\n";

void ExpectFailure(const RipFixture& bench, const ProgramRun& outcome, int status,
                   const std::string& error) {
  EXPECT_TRUE(outcome.byItself);
  EXPECT_EQ(outcome.status, status) << outcome.reports;
  EXPECT_TRUE(outcome.Says("ERROR: " + error)) << outcome.reports;
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(bench.Remains(), Names{});
  EXPECT_EQ(bench.Processes(), Names{});
}

// The job's only page, which must be the red one at 72 pixels per inch.
void ExpectRedPage(const RipFixture& bench, const std::string& job) {
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  const Names pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 1U) << outcome.reports;
  const Pixels pixels = ReadPixels(pages[0] + "/page.tif");
  EXPECT_EQ(pixels.width, 72U);
  EXPECT_EQ(pixels.At(36, 36), "255,0,0");
  const pages::PageInfo info = CheckedInfo(pages[0]);
  EXPECT_EQ(info.printer, "KVI Tiff Screen Preview");
  EXPECT_EQ(info.mode, "TIFF/tiff default.ps");
  EXPECT_EQ(info.xResolution, 72);
}

TEST(RipFailure, of_a_program_is_status_1_and_leaves_nothing) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = bench.File("job.ps", "%!PS\n" + RedPage + "fehler\n");
  ExpectFailure(bench, bench.Run({bench.Prefix(), job}), 1,
                "PostScript error: /undefined in fehler.");
}

TEST(RipFailure, of_a_job_without_a_page_is_status_1) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  ExpectFailure(bench, bench.Run({bench.Prefix(), bench.File("job.ps", "%!PS\n1 pop\n")}), 1,
                "The job makes no page.");
}

TEST(RipFailure, of_an_install_job_is_status_2) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  ExpectFailure(bench, bench.Run({"-s", bench.File("job.ps", "%!PS\nfehler\n")}), 2,
                "PostScript error: /undefined in fehler.");
}

TEST(RipFailure, of_input_is_status_2) {
  const RipFixture bench;
  const std::string text = bench.File("text.ps", "no PostScript\n");
  ExpectFailure(bench, bench.Run({bench.Prefix(), text}), 2,
                "The job is neither PostScript nor PDF: " + text + ".");
  const std::string missing = bench.Root() + "/missing.ps";
  ExpectFailure(bench, bench.Run({missing}), 2,
                "The job can't be read: open '" + missing + "': No such file or directory (2).");
  const std::string job = bench.File("job.ps", "%!PS\n" + RedPage);
  ExpectFailure(bench, bench.Run({missing, job}), 2,
                "The prefix can't be read: open '" + missing + "': No such file or directory (2).");
  ExpectFailure(bench, bench.Run({bench.Root()}), 2,
                "The job is not a file: " + bench.Root() + ".");
}

TEST(RipFailure, without_ghostscript_is_status_3) {
  RipFixture bench;
  bench.Set("PATH", bench.Root());
  ExpectFailure(bench, bench.Run({bench.File("job.ps", "%!PS\n" + RedPage)}), 3,
                "Ghostscript is not installed: there is no program gs on the search path.");
}

TEST(RipFailure, without_its_prolog_is_status_3) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string prolog = bench.RipDirectory() + "/System/prolog";
  fs::remove_all(prolog);
  ExpectFailure(bench, bench.Run({bench.File("job.ps", "%!PS\n" + RedPage)}), 3,
                "open '" + prolog + "': No such file or directory (2).");
}

TEST(RipLimit, of_time_ends_an_endless_job) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_TIMEOUT", "1");
  ExpectFailure(bench, bench.Run({bench.Prefix(), bench.File("job.ps", "%!PS\n{} loop\n")}), 3,
                "The job took longer than 1 seconds and was ended (RASTREL_RIP_TIMEOUT).");
}

TEST(RipLimit, of_processor_time_ends_an_endless_job) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_CPU", "1");
  ExpectFailure(
      bench, bench.Run({bench.Prefix(), bench.File("job.ps", "%!PS\n{} loop\n")}), 3,
      "The job took more than 1 seconds of processor time and was ended (RASTREL_RIP_CPU).");
}

TEST(RipLimit, of_memory_ends_a_greedy_job) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_MEMORY", "100");
  const std::string job = "%!PS\n[ { 65000 string } loop\n";
  ExpectFailure(bench, bench.Run({bench.Prefix(), bench.File("job.ps", job)}), 3,
                "The job needs more than 100 MiB of memory (RASTREL_RIP_MEMORY).");
}

TEST(RipLimit, of_pixels_refuses_a_huge_page_in_every_mode) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      bench.File("job.ps", "%!PS\n<< /PageSize [100000 100000] >> setpagedevice showpage\n");
  ExpectFailure(bench, bench.Run({bench.Prefix(), job}), 3,
                "Page 1 would be 100000 x 100000 pixels; the limit is 1600000000 pixels "
                "(RASTREL_RIP_PIXELS) and 400000 on a side.");
  ExpectFailure(bench, bench.Run({bench.Prefix("CMYK/300 dpi.ps"), job}), 3,
                "Page 1 would be 416667 x 416667 pixels; the limit is 1600000000 pixels "
                "(RASTREL_RIP_PIXELS) and 400000 on a side.");
}

TEST(RipLimit, of_all_pages_together_ends_a_job_without_end) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_SIZE", "5");
  const std::string error = "The job's pages take more than 5 MiB (RASTREL_RIP_SIZE).";
  const std::string job = bench.File("job.ps", "%!PS\n{ showpage } loop\n");
  ExpectFailure(bench, bench.Run({bench.Prefix(), job}), 3, error);
}

TEST(RipLimit, that_is_no_number_is_passed_over_with_a_warning) {
  REQUIRE_GHOSTSCRIPT();
  RipFixture bench;
  bench.Set("RASTREL_RIP_TIMEOUT", "-5");
  const ProgramRun outcome = bench.Run({bench.File("job.ps", "%!PS\n" + RedPage)});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(
      outcome.Says("WARNING: RASTREL_RIP_TIMEOUT is not a whole number above 0; 1800 is used."));
}

TEST(HostileJob, can_not_change_settings_that_the_prefix_fixed) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  ExpectRedPage(bench,
                "%!PS\n(Other:) SelectPrinter\n"
                "(%Lumiscript%pmodes/RGB/300 dpi.ps) SelectPrintMode\n" +
                    RedPage);
  ExpectRedPage(bench, "%!PS\n4Color 600 600 SetXYResolution InitRIP\n" + RedPage);
  ExpectRedPage(bench,
                "%!PS\n<< /HWResolution [300 300] /OutputDevice /tiffsep /NumCopies 3 "
                "/OutputFile (/tmp/out) >> setpagedevice\n" +
                    RedPage);
}

TEST(HostileJob, may_end_as_it_likes) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string Exit = "\x1b%-12345X";
  ExpectRedPage(bench, "\x04%!PS\n" + RedPage + "\x04");
  ExpectRedPage(bench, "%!PS\n/x 1 def\n\x04%!PS\n" + RedPage + "\x04");
  ExpectRedPage(bench, "%!PS\n" + RedPage + "quit\nfehler\n");
  ExpectRedPage(bench, "%!PS\n" + RedPage + "stop\n");
  ExpectRedPage(bench, "%!PS\nsave save 1 2 3 << >> begin\n" + RedPage);
  ExpectRedPage(bench, Exit + "@PJL ENTER LANGUAGE=POSTSCRIPT\n%!PS\n" + RedPage + Exit +
                           "@PJL EOJ\n" + Exit);
  ExpectRedPage(bench, "%!PS\n/#copies 5 def\n" + RedPage);
}

TEST(HostileJob, keeps_the_selection_over_two_jobs_in_one_file) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = "%!PS\n(a:) SelectPrinter\n" + RedPage +
                          "\x04%!PS\n(b:) SelectPrinter\n" +
                          "(%Lumiscript%pmodes/RGB/300 dpi.ps) SelectPrintMode\n" + RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  const Names pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 2U) << outcome.reports;
  for (const std::string& page : pages) {
    EXPECT_EQ(CheckedInfo(page).printer, "KVI Tiff Screen Preview");
    EXPECT_EQ(ReadPixels(page + "/page.tif").width, 72U);
  }
}

TEST(HostileJob, can_not_forge_reports) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n(%stderr) (w) file dup (ERROR: forged\\nINFO: PRINTING\\rWARNING: forged\\n"
      "PROGRESS: 77 %\\n\\000ERROR: RUN_INSTALL\\n) writestring flushfile\n"
      "(ERROR: forged\\n) print flush\n" +
      RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_EQ(outcome.status, 0);
  const std::string lines = "\n" + outcome.reports;
  for (const std::string line : {"\nERROR:", "\nWARNING:", "\nINFO: PRINTING", "\nPROGRESS: 77"}) {
    EXPECT_EQ(lines.find(line), std::string::npos) << outcome.reports;
  }
  EXPECT_TRUE(outcome.Says("gs: ERROR: forged")) << outcome.reports;
  EXPECT_EQ(outcome.reports.find('\0'), std::string::npos);
}

// The word that marks a report is in no place that a program could read it from: not by name, not
// in a procedure, not in the state after an error.
TEST(HostileJob, can_not_find_the_word_of_reports) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n"
      "/tell { (seen ) print == flush } def\n"
      "systemdict /rip.word known tell userdict /rip.word known tell\n"
      "userdict /rip.report known tell\n"
      "{ currentpagedevice /EndPage get 0 get } stopped { (unreadable) tell } if clear\n"
      "{ currentpagedevice /BeginPage get aload pop } stopped { (unreadable) tell } if clear\n"
      // A stack with room for 0 to 39 more elements, at which some step of a report must fail. The
      // interpreter hands what lay on the stack over as an array.
      "<< /MaxOpStack 2000 >> setuserparams\n"
      "/Report currentpagedevice /EndPage get def /failures 0 def\n"
      "{ { 0 } loop } stopped pop length /limit exch def clear\n"
      "0 1 39 {\n"
      "  /room exch def\n"
      "  { 0 1 limit room sub { } for pop 0 Report } stopped {\n"
      "    /failures failures 1 add def\n"
      "    count 0 gt { dup type /arraytype eq { { dup type /stringtype eq { tell } { pop } ifelse "
      "}"
      " forall } if } if\n"
      "  } if clear\n"
      "  $error /ostack get dup type /arraytype eq { { dup type /stringtype eq { tell } { pop }"
      " ifelse } forall } { pop } ifelse\n"
      "} for\n"
      "failures 5 gt { (many failures) tell } if\n"
      "<< /MaxOpStack 300000 >> setuserparams\n"
      // A report on a stream that is closed.
      "(%stderr) (w) file closefile { 1 0 Report } stopped pop\n"
      "count { dup type /stringtype eq { tell } { pop } ifelse } repeat\n" +
      RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("gs: seen true"), std::string::npos) << outcome.reports;
  EXPECT_TRUE(outcome.Says("gs: seen (unreadable)")) << outcome.reports;
  EXPECT_TRUE(outcome.Says("gs: seen (many failures)")) << outcome.reports;
  // 32 hexadecimal digits in a row would be the word.
  std::size_t digits = 0;
  for (const char c : outcome.reports) {
    digits = std::string("0123456789abcdef").find(c) != std::string::npos ? digits + 1 : 0;
    ASSERT_LT(digits, 32U) << outcome.reports;
  }
}

TEST(HostileJob, reads_and_writes_nothing_outside) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string secret = bench.File("secret", "secret");
  const std::string own = bench.RipDirectory() + "/System/pmodes/TIFF/tiff default.ps";
  std::string job =
      "%!PS\n/try { { 2 copy file } stopped { pop pop (denied ) print pop = flush }"
      " { (OPENED) = } ifelse } def\n";
  const Names files{"(" + secret + ") (r)",
                    "(" + own + ") (w)",
                    "(" + bench.Root() + "/new) (w)",
                    "(/etc/passwd) (r)",
                    "(/proc/self/environ) (r)",
                    "(%pipe%id) (r)",
                    "(/dev/fd/8/TIFF/tiff default.ps) (w)",
                    "(/dev/fd/8/../../../../secret) (r)",
                    "(/dev/fd/7/begin.ps) (w)"};
  for (const std::string& file : files) job += file + " try\n";
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job + RedPage)});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("OPENED"), std::string::npos) << outcome.reports;
  EXPECT_TRUE(outcome.Says("gs: denied /etc/passwd")) << outcome.reports;
  EXPECT_FALSE(fs::exists(bench.Root() + "/new"));
}

// Such a program is the RIP's parent no more when the pages are handed over.
TEST(Starter, that_has_ended_before_the_pages_are_there_is_still_their_owner) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string log = bench.File("reports", "");
  const std::string starter = bench.File("starter", "");
  const std::string script =
      "log=$1 starter=$2; shift 2; \"$@\" 2>\"$log\" &\n"
      "until grep -q INTERPRETING \"$log\"; do sleep 0.01; done\n"
      "echo $$ >\"$starter\"\n";
  const std::string slow = bench.File("job.ps", "%!PS\n1 1 10000000 { pop } for\n" + RedPage);
  const ProgramRun outcome = bench.RunProgram({"/bin/sh", "-c", script, "sh", log, starter,
                                               bench.RipDirectory() + "/corerast.exe", "-M", "-Q",
                                               "-m128", bench.Prefix(), slow});
  const std::vector<std::string> pages = RipFixture::PagesOf(outcome);
  ASSERT_EQ(pages.size(), 1U) << outcome.output;
  const auto owner = os::ReadOwner(fs::path(pages[0]).parent_path().string());
  ASSERT_TRUE(owner) << Describe(owner.Error());
  std::uint32_t id = 0;
  std::ifstream(starter) >> id;
  EXPECT_EQ(owner->id, id);
  EXPECT_FALSE(os::MayBeAlive(*owner));
}

TEST(HostileJob, can_not_leave_files_behind) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n{ null (w) .tempfile dup (x) writestring closefile } stopped pop clear\n"
      "{ (/dev/fd/10/0009.tif) (w) file dup (x) writestring closefile } stopped pop clear\n"
      "{ (/dev/fd/10/0001\\(Cyan\\).tif) (w) file closefile } stopped pop clear\n" +
      RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  // The run's directory, the name of its owner, its page and the page's three files.
  EXPECT_EQ(bench.Remains().size(), 6U);
}

TEST(HostileJob, that_writes_into_the_pixel_stream_spoils_only_itself) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job =
      "%!PS\n{ (/dev/fd/3) (w) file dup (garbage garbage ) writestring "
      "closefile } stopped pop clear\n" +
      RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_TRUE(outcome.byItself);
  EXPECT_EQ(outcome.status, 3) << outcome.reports;
  EXPECT_EQ(bench.Remains(), Names{});
}

TEST(HostileJob, that_floods_the_log_is_cut_short) {
  REQUIRE_GHOSTSCRIPT();
  const RipFixture bench;
  const std::string job = "%!PS\n1 1 200000 { pop (a line of a job that talks) = } for\n" + RedPage;
  const ProgramRun outcome = bench.Run({bench.Prefix(), bench.File("job.ps", job)});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_LT(outcome.reports.size(), 600000U);
}

}  // namespace
}  // namespace rastrel::corerast::testing
