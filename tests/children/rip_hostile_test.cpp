// Jobs that mean harm, against the RIP as a process: each is refused, or ended in time with a clear
// message, and nothing outside the run's own directory changes.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/children/rip_fixture.h"
#include "tests/support/tree_snapshot.h"

namespace rastrel::corerast::testing {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const std::string RedPage =
    "<< /PageSize [72 72] >> setpagedevice 1 0 0 setrgbcolor 0 0 72 72 rectfill showpage\n";

// A data root with files around it that no job may read or change. At its end all of them are
// compared with their content before.
class Fortress {
 public:
  Fortress() {
    m_Bench.File("home/.config/keep", "kept");
    m_Bench.File("jobs/secret.ps", "%!PS\n(SECRET READ) = flush\n");
    m_Bench.File("jobs/other.ps", "%!PS\n");
    fs::create_symlink(Beside("jobs/secret.ps"), Beside("jobs/link.ps"));
    fs::create_directory_symlink(Beside("home"), Beside("jobs/folder"));
    m_Bench.Set("HOME", Beside("home"));
    m_Prefix = m_Bench.Prefix();
  }

  [[nodiscard]] std::string Beside(const std::string& name) const {
    return (fs::path(m_Bench.Root()).parent_path() / name).string();
  }
  void Set(const std::string& name, const std::string& value) { m_Bench.Set(name, value); }

  // Runs the job, which is among the other jobs.
  ProgramRun Run(const std::string& job, const std::string& name = "jobs/job.ps") {
    const std::string path = m_Bench.File(name, job);
    auto before = test::TreeSnapshot(Beside(""));
    ProgramRun outcome = m_Bench.Run({m_Prefix, path});
    m_Pages = RipFixture::PagesOf(outcome);
    if (outcome.output.empty()) {
      EXPECT_EQ(m_Bench.Remains(), Names{});
    }
    EXPECT_EQ(m_Bench.Processes(), Names{});
    fs::remove_all(m_Bench.RipDirectory() + "/System/c-out");
    auto after = test::TreeSnapshot(Beside(""));
    // The link that a list names the pages by in a root with letters beyond ASCII.
    for (auto* tree : {&before, &after}) tree->erase("root/drive_r");
    EXPECT_EQ(after, before);
    return outcome;
  }
  [[nodiscard]] std::size_t PageCount() const { return m_Pages.size(); }

 private:
  RipFixture m_Bench;
  std::string m_Prefix;
  Names m_Pages;
};

void ExpectEnd(const ProgramRun& outcome, int status, const std::string& error) {
  EXPECT_TRUE(outcome.byItself);
  EXPECT_EQ(outcome.status, status) << outcome.reports;
  EXPECT_TRUE(outcome.Says("ERROR: " + error)) << outcome.reports;
  EXPECT_EQ(outcome.output, "");
}

// ---- Files ----

TEST(HostileJob, is_refused_every_way_to_a_file) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  const auto named = [&](const std::string& name) { return "(" + fortress.Beside(name) + ")"; };
  const std::string secret = named("jobs/secret.ps");
  const Names attempts{
      secret + " (r) file", secret + " run", secret + " (r) file closefile",
      "(%os%" + fortress.Beside("jobs/secret.ps") + ") (r) file",
      "(%os%" + fortress.Beside("jobs/new.ps") + ") (w) file", named("jobs/link.ps") + " (r) file",
      named("jobs/link.ps") + " run", named("jobs/folder/.config/keep") + " (r) file",
      named("jobs/../jobs/secret.ps") + " (r) file", "(../../../../../jobs/secret.ps) (r) file",
      "(jobs/secret.ps) run", named("jobs/other.ps") + " deletefile",
      named("jobs/link.ps") + " deletefile",
      named("jobs/other.ps") + " " + named("jobs/moved.ps") + " renamefile",
      named("jobs/other.ps") + " (/dev/fd/9/taken) renamefile",
      named("jobs/other.ps") + " (a) file", named("jobs/other.ps") + " (r+) file",
      named("jobs/other.ps") + " (w+) file",
      "(%pipe%touch " + fortress.Beside("jobs/touched") + ") (w) file",
      "(|touch " + fortress.Beside("jobs/touched") + ") (w) file",
      "(%pipe%cat " + fortress.Beside("jobs/secret.ps") + ") (r) file",
      named("jobs/new.ps") + " (w) .tempfile", "(%disk0%x) (w) file", "(/etc/hostname) (r) file",
      "(/proc/self/cmdline) (r) file", "(/proc/self/mem) (w) file", "(/dev/fd/0/x) (r) file",
      "(/dev/fd/7/../../../../../jobs/secret.ps) (r) file",
      "(/dev/fd/8/../../../../../jobs/secret.ps) run",
      "(/dev/fd/9/../../../../../../../jobs/new.ps) (w) file",
      // Through devices.
      "<< /OutputFile " + named("jobs/new.ppm") + " >> systemdict /setpagedevice get exec showpage",
      "<< /OutputDevice /pdfwrite /OutputFile " + named("jobs/new.pdf") +
          " >> systemdict /setpagedevice get exec showpage",
      "mark /OutputFile " + named("jobs/new.ppm") + " currentdevice putdeviceprops showpage",
      "(ppmraw) finddevice dup setdevice mark /OutputFile " + named("jobs/new.ppm") +
          " 3 -1 roll putdeviceprops setdevice showpage",
      "(ppmraw) selectdevice mark /OutputFile (%pipe%touch " + fortress.Beside("jobs/touched") +
          ") currentdevice putdeviceprops setdevice showpage",
      // Through parameters of the whole run.
      "<< /PermitFileReading [(*)] /PermitFileWriting [(*)] >> setuserparams " + secret +
          " (r) file",
      "<< /LockSafetyParams false >> setuserparams mark /LockSafetyParams false currentdevice "
      "putdeviceprops pop " +
          secret + " (r) file",
      "/SAFER false def systemdict /SAFER false put " + secret + " (r) file",
      ".setsafe .locksafe " + secret + " (r) file",
      "/.locksafe { } def .locksafe " + secret + " (r) file",
      "<< /GenericResourceDir " + named("jobs/") + " >> setsystemparams /x /secret findresource",
      "/secret /Font findresource pop " + named("jobs/secret.ps") + " .runlibfile",
      secret + " findlibfile { (r) file } { stop } ifelse", secret + " .libfile not { stop } if",
      "serverdict begin 0 exitserver " + secret + " (r) file",
      "1183615869 internaldict begin superexec " + secret + " (r) file"};
  std::string job =
      "%!PS\n/tries 0 def\n"
      "/try { /tries tries 1 add store mark exch stopped { (refused ) } { (DONE ) } ifelse print "
      "tries = flush cleartomark } bind def\n";
  for (const std::string& attempt : attempts) job += "save { " + attempt + " } try pop\n";
  const ProgramRun outcome = fortress.Run(job);
  for (std::size_t i = 1; i <= attempts.size(); ++i) {
    EXPECT_TRUE(outcome.Says("gs: refused " + std::to_string(i))) << attempts[i - 1];
  }
  EXPECT_EQ(outcome.reports.find("DONE"), std::string::npos) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("SECRET"), std::string::npos) << outcome.reports;
  // This one the interpreter takes so ill that it ends.
  ExpectEnd(fortress.Run("%!PS\n{ /PermitFileReading " + secret + " .addcontrolpath } stopped " +
                         secret + " run\n"),
            1, "Ghostscript could not interpret the job.");
}

// A job may list the names of files that it may read.
TEST(HostileJob, sees_no_names_of_other_files) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  const std::string list = " { = flush } 1024 string filenameforall\n";
  std::string job = "%!PS\n";
  for (const std::string& pattern :
       {fortress.Beside("*"), fortress.Beside("jobs/*"), std::string("/etc/*"),
        std::string("/dev/fd/8/../../../../../jobs/*")}) {
    job += "{ (" + pattern + ")" + list + "} stopped pop\n";
  }
  const ProgramRun outcome = fortress.Run(job + RedPage);
  EXPECT_EQ(outcome.status, 0) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("secret"), std::string::npos) << outcome.reports;
  EXPECT_EQ(outcome.reports.find("passwd"), std::string::npos) << outcome.reports;
}

TEST(HostileJob, that_fills_its_temporary_directory_is_ended) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  fortress.Set("RASTREL_RIP_TEMP", "20");
  const std::string error =
      "The job's temporary files take more than 20 MiB (RASTREL_RIP_TEMP), or are more than 1000.";
  // The slow pace leaves the watch its chances: a job at full speed may be some hundred mebibytes
  // ahead of it.
  const std::string slowly =
      "/slowly { 20 { dup block writestring dup flushfile 20000 { 1 pop } repeat } repeat } def\n";
  const std::string start = "%!PS\n/block 65000 string def " + slowly;
  for (const std::string job :
       {"{ null (w) .tempfile exch pop slowly closefile } loop",
        "{ null (w) .tempfile exch deletefile slowly } loop",
        "0 1 100000 { 20 string cvs (/dev/fd/9/x) exch concatstrings (w) file slowly } for"}) {
    SCOPED_TRACE(job);
    ExpectEnd(fortress.Run(start + job + "\n"), 3, error);
  }
  fortress.Set("RASTREL_RIP_TEMP", "1000");
  const std::string many =
      "The job's temporary files take more than 1000 MiB (RASTREL_RIP_TEMP), or are more than "
      "1000.";
  ExpectEnd(fortress.Run("%!PS\n{ null (w) .tempfile closefile pop } loop\n"), 3, many);
  fortress.Set("RASTREL_RIP_SIZE", "20");
  ExpectEnd(fortress.Run(start + "0 1 100000 { 20 string cvs (/dev/fd/10/x) exch concatstrings "
                                 "(w) file slowly } for\n"),
            3,
            "The job's separations take more than 20 MiB (RASTREL_RIP_SIZE), or are more than 1000 "
            "files.");
}

// ---- Time ----

TEST(HostileJob, without_an_end_is_ended_in_time) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  fortress.Set("RASTREL_RIP_TIMEOUT", "1");
  const std::string error =
      "The job took longer than 1 seconds and was ended (RASTREL_RIP_TIMEOUT).";
  for (const std::string& job :
       Names{"{ { { } loop } stopped } loop",
             "errordict begin /interrupt { } def /timeout { } def end { } loop",
             "{ 0 0 moveto 10000 10000 rlineto stroke (talk) print flush } loop",
             "{ (%stderr) (w) file (ERROR: forged\n) writestring } loop",
             "{ << /Width 100000 /Height 100000 /ImageType 1 /BitsPerComponent 8 /Decode [0 1] "
             "/ImageMatrix [1 0 0 1 0 0] /DataSource { 65000 string } >> /DeviceGray setcolorspace "
             "image } loop"}) {
    SCOPED_TRACE(job);
    // None of these ends by itself, nor does any other limit end it before this test's own.
    ExpectEnd(fortress.Run("%!PS\n" + job + "\n"), 3, error);
  }
}

// ---- Memory ----

TEST(HostileJob, that_wants_all_memory_is_ended) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  fortress.Set("RASTREL_RIP_MEMORY", "100");
  fortress.Set("RASTREL_RIP_TIMEOUT", "60");
  const std::string error = "The job needs more than 100 MiB of memory (RASTREL_RIP_MEMORY).";
  for (const std::string& job :
       Names{"[ { 65000 string } loop", "[ { 65000 array } loop", "{ 20000 dict begin } loop",
             "/d 10 dict def 0 1 100000000 { d exch 100 string put } for",
             "0 0 moveto 10000000 { 1 2 rlineto 2 1 rlineto } repeat stroke",
             "/grow { dup length 2 mul string dup 0 4 -1 roll putinterval } def (x) { grow } loop",
             "[ { save } loop"}) {
    SCOPED_TRACE(job);
    const ProgramRun outcome = fortress.Run("%!PS\n" + job + "\n");
    EXPECT_TRUE(outcome.byItself);
    EXPECT_EQ(outcome.output, "");
    // A limit of the language may be met before the one of memory.
    const bool memory = outcome.status == 3 && outcome.Says("ERROR: " + error);
    const bool language =
        outcome.status == 1 && (outcome.reports.find("/limitcheck") != std::string::npos ||
                                outcome.reports.find("/rangecheck") != std::string::npos ||
                                outcome.reports.find("stackoverflow") != std::string::npos);
    EXPECT_TRUE(memory || language) << outcome.reports;
  }
}

TEST(HostileJob, that_calls_itself_without_end_is_a_program_that_fails) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  ExpectEnd(fortress.Run("%!PS\n/f { f 1 pop } def f\n"), 1,
            "PostScript error: /execstackoverflow in f.");
}

// ---- Pages ----

TEST(HostileJob, with_a_huge_page_is_refused_in_every_kind_of_file) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  const std::string error =
      "Page 1 would be 100000 x 100000 pixels; the limit is 1600000000 pixels "
      "(RASTREL_RIP_PIXELS) and 400000 on a side.";
  ExpectEnd(fortress.Run("%!PS\n<< /PageSize [100000 100000] >> setpagedevice showpage\n"), 3,
            error);
  ExpectEnd(fortress.Run("%!PS\nstatusdict begin 100000 100000 0 1 setpageparams end showpage\n"),
            3, error);
  ExpectEnd(fortress.Run("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100000 100000\n"
                         "%%EndComments\nshowpage\n",
                         "jobs/job.eps"),
            3, error);
  ExpectEnd(fortress.Run("%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
                         "2 0 obj\n<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n"
                         "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 100000 100000] >>\n"
                         "endobj\ntrailer << /Size 4 /Root 1 0 R >>\n%%EOF\n",
                         "jobs/job.pdf"),
            3, error);
}

// ---- Reports ----

// All lines that are reports, of whatever sender: one after the other, and each with a partial line
// and a carriage return ahead of it.
TEST(HostileJob, forges_no_report_by_any_line) {
  REQUIRE_GHOSTSCRIPT();
  Fortress fortress;
  const Names lines{"INFO: INITIALISING",
                    "INFO: READY",
                    "INFO: VALID_RECOVERY",
                    "INFO: PRINTING",
                    "INFO: CLQ_success",
                    "ERROR: RUN_INSTALL",
                    "ERROR: ERROR",
                    "ERROR: INVALID_RECOVERY",
                    "ERROR:",
                    "WARNING: text",
                    "PROGRESS: 77 %",
                    "PAGE: 9",
                    "printer Forged",
                    "print mode Forged",
                    "QRAST: 1 2 3 4",
                    "%%[ Error: undefined; OffendingCommand: forged ]%%",
                    "%%[ PrinterError: out of paper ]%%",
                    "%%[ status: idle ]%%",
                    "0123456789abcdef0123456789abcdef JOB ",
                    "0123456789abcdef0123456789abcdef PRINTER 466f72676564",
                    " PAGE ",
                    ">> -- C-Format 2.0 -- <<"};
  std::string job = "%!PS\n/out (%stderr) (w) file def\n";
  for (const std::string& line : lines) {
    for (const std::string start : {"", "\\n", "\\r", "\\r\\n", "partial\\r", "\\000"}) {
      job += "out (" + start + line + "\\n) writestring out flushfile (" + start + line +
             "\\n) print flush\n";
    }
  }
  const auto reports = [](const ProgramRun& outcome) {
    Names kept;
    std::istringstream text(outcome.reports);
    for (std::string line; std::getline(text, line);) {
      if (!line.starts_with("gs: ") && !line.starts_with("PROGRESS: ")) kept.push_back(line);
    }
    return kept;
  };
  const ProgramRun honest = fortress.Run("%!PS\n" + RedPage);
  const ProgramRun forging = fortress.Run(job + RedPage);
  EXPECT_EQ(forging.status, 0) << forging.reports;
  EXPECT_EQ(reports(forging), reports(honest));
  EXPECT_EQ(forging.reports.find("PROGRESS: 77"), forging.reports.find("gs: PROGRESS: 77") + 4);
  EXPECT_EQ(fortress.PageCount(), 1U);
  EXPECT_EQ(forging.reports.find('\r'), std::string::npos);
  EXPECT_EQ(forging.reports.find('\0'), std::string::npos);
}

}  // namespace
}  // namespace rastrel::corerast::testing
