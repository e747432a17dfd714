#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "interpreter/interpreter.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"
#include "tests/support/present_directory.h"
#include "tests/support/process_file.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::interpreter {
namespace {

using namespace std::chrono_literals;

// A red and a blue bar, unless the body is another.
std::string EpsFile(const std::string& body =
                        "1 0 0 setrgbcolor 100 205 20 5 rectfill\n"
                        "0 0 1 setrgbcolor 100 200 20 5 rectfill\n") {
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 120 210\n%%EndComments\n" + body +
         "%%EOF\n";
}

std::string Refusal(const std::string& bytes, const EpsLimits& limits = {}) {
  const auto converted = PdfFromEps(bytes, limits);
  return converted ? "" : Describe(converted.Error());
}

bool Says(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

TEST(EpsConversion, a_file_becomes_a_pdf) {
  const auto converted = PdfFromEps(EpsFile());
  ASSERT_TRUE(converted);
  EXPECT_TRUE(converted->starts_with("%PDF-"));
}

// --- PostScript without showpage ---

// Points of the page's sides as the PDF says them.
std::string MediaBox(const std::string& pdf) {
  const std::size_t place = pdf.find("/MediaBox [");
  return place == pdf.npos ? "" : pdf.substr(place + 11, pdf.find(']', place) - place - 11);
}

TEST(EpsConversion, marks_without_showpage_are_a_page_as_large_as_they_are) {
  const auto open = PdfFromEps("%!PS\n100 200 50 20 rectfill\n");
  ASSERT_TRUE(open) << Describe(open.Error());
  // A dot of 2400 to the inch on the left and below, where the measure rounds outward.
  EXPECT_TRUE(MediaBox(*open).starts_with("0 0 50.0")) << MediaBox(*open);
  const auto sheet =
      PdfFromEps("%!PS\n<< /PageSize [300 200] >> setpagedevice 100 20 50 20 rectfill\n");
  ASSERT_TRUE(sheet) << Describe(sheet.Error());
  EXPECT_EQ(MediaBox(*sheet), "0 0 300 200");
}

TEST(EpsConversion, neither_marks_nor_showpage_is_refused) {
  EXPECT_EQ(Refusal("%!PS\n1 2 add pop\n"),
            "it has neither marks nor showpage, so there is no page");
}

TEST(EpsConversion, an_empty_page_that_is_shown_is_a_page) {
  EXPECT_EQ(Refusal("%!PS\n<< /PageSize [300 200] >> setpagedevice showpage\n"), "");
}

// The page's size is foreign then, and nothing else.
TEST(EpsConversion, a_report_that_the_file_forges_makes_at_most_another_page_or_a_refusal) {
  const std::string forged =
      "(%stderr) (w) file dup (\nRastrelPages 0\nRastrelMeasure 9 9 0 x\n) writestring "
      "flushfile /currentdevice { nonsense } def\n";
  EXPECT_NE(Refusal("%!PS\n" + forged), "");
  EXPECT_NE(Refusal("%!PS\n100 200 50 20 rectfill showpage\n" + forged), "");
}

TEST(EpsConversion, letters_on_their_side_do_not_turn_the_page) {
  const auto converted = PdfFromEps(
      "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 100 200\n/Helvetica findfont 20 scalefont "
      "setfont 50 20 moveto 90 rotate (Hello there) show\n");
  ASSERT_TRUE(converted);
  EXPECT_EQ(converted->find("/Rotate 90"), converted->npos);
}

TEST(EpsConversion, letters_of_a_pdf_become_paths) {
  const auto letters = PdfFromEps(
      "%!PS\n/Helvetica findfont 20 scalefont setfont 50 20 moveto (Hello) show showpage\n");
  ASSERT_TRUE(letters);
  EXPECT_NE(letters->find("/Font"), letters->npos);
  const auto outlined = OutlinedPdf(*letters);
  ASSERT_TRUE(outlined) << Describe(outlined.Error());
  EXPECT_EQ(outlined->find("/Font"), outlined->npos);
}

TEST(EpsConversion, a_pdf_that_can_not_be_read_whole_has_no_paths) {
  const auto cut = OutlinedPdf("%PDF-1.4\n1 0 obj\n<</Type /Catalog");
  ASSERT_FALSE(cut);
  EXPECT_NE(Describe(cut.Error()), "");
}

// "For at most a minute" (docs/formats/pictures.md).
TEST(EpsConversion, a_file_has_a_minute_by_default) { EXPECT_EQ(EpsLimits().time, 60s); }

TEST(EpsConversion, an_error_in_the_file_is_reported_by_the_interpreters_message) {
  EXPECT_TRUE(Says(Refusal(EpsFile("nonsense\n")), "Error: /undefined in nonsense"));
}

// A terminal would obey them.
TEST(EpsConversion, control_characters_of_the_file_do_not_reach_a_person) {
  const std::string refusal = Refusal(EpsFile(
      "(%stderr) (w) file dup (Error: \\033]0;title\\007 \\200\\302\\233 \\342\\200\\256 x\\n) "
      "writestring flushfile nonsense\n"));
  EXPECT_EQ(
      refusal,
      "the interpreter ended with 1: Error: \\x1b]0;title\\x07 \xEF\xBF\xBD\\u009b \\u202e x");
}

TEST(EpsConversion, a_file_that_does_not_end_is_ended) {
  EpsLimits limits;
  limits.time = 500ms;
  EXPECT_EQ(Refusal(EpsFile("{} loop\n"), limits),
            "the interpreter took more than 500 milliseconds");
}

TEST(EpsConversion, a_file_that_makes_more_than_the_limit_is_ended) {
  EpsLimits limits;
  limits.bytes = 100;
  EXPECT_EQ(Refusal(EpsFile(), limits), "the interpreter made more than 100 bytes of it");
}

TEST(EpsConversion, a_file_that_asks_for_all_memory_is_refused) {
  EpsLimits limits;
  limits.memoryKibibytes = 50'000;
  EXPECT_TRUE(Says(Refusal(EpsFile("[ { 1000000 string } loop\n"), limits), "VMerror"));
}

TEST(EpsConversion, a_file_reads_and_writes_no_other) {
  const test::ScratchDirectory directory;
  directory.Write("there", "secret");
  const std::string there = directory.Path("there");
  EXPECT_TRUE(Says(Refusal(EpsFile("(" + there + ") (r) file pop\n")), "invalidfileaccess"));
  EXPECT_TRUE(Says(Refusal(EpsFile("(" + there + ") (w) file pop\n")), "invalidfileaccess"));
  EXPECT_NE(Refusal(EpsFile("(" + there + ") deletefile\n")), "");
  EXPECT_NE(Refusal(EpsFile("(%pipe%touch " + directory.Path("made") + ") (w) file pop\n")), "");
  EXPECT_FALSE(directory.Has("made"));
  EXPECT_EQ(directory.Read("there"), "secret");
}

TEST(EpsConversion, a_file_that_talks_without_end_does_not_fill_memory) {
  EpsLimits limits;
  limits.time = 1s;
  EXPECT_EQ(Refusal(EpsFile("{(words words words) ==} loop\n"), limits),
            "the interpreter took more than 1 second");
}

// Files of about 26 MB each, without end.
constexpr const char* EndlessFiles =
    "/s 65000 string def { null (w+) .tempfile exch pop /f exch def "
    "400 { f s writestring } repeat } loop\n";

TEST(EpsConversion, a_file_that_fills_the_disk_is_ended) {
  const test::ScratchDirectory directory;
  const test::EnvironmentGuard temporary("TMPDIR", directory.Path());
  EpsLimits limits;
  limits.workBytes = std::size_t{100} << 20;
  EXPECT_EQ(Refusal(EpsFile(EndlessFiles), limits),
            "the interpreter's files take more than 100 MiB, or are more than 1000");
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST(EpsConversion, a_file_that_makes_one_without_end_is_ended) {
  EpsLimits limits;
  limits.workBytes = std::size_t{10} << 20;
  EXPECT_EQ(Refusal(EpsFile("/s 65000 string def null (w+) .tempfile exch pop /f exch def "
                            "{ f s writestring } loop\n"),
                    limits),
            "the interpreter's files take more than 10 MiB, or are more than 1000");
}

TEST(EpsConversion, the_users_limits_of_runs_hold_where_they_are_lower) {
  const test::EnvironmentGuard time("RASTREL_RIP_TIMEOUT", "1");
  EXPECT_EQ(Refusal(EpsFile("{} loop\n")), "the interpreter took more than 1 second");
}

TEST(EpsConversion, no_file_of_the_interpreters_is_left) {
  const test::ScratchDirectory directory;
  const test::EnvironmentGuard temporary("TMPDIR", directory.Path());
  EpsLimits limits;
  limits.time = 500ms;
  EXPECT_EQ(Refusal(EpsFile()), "");
  EXPECT_NE(Refusal(EpsFile("1 0 0 setrgbcolor 100 200 20 5 rectfill {} loop\n"), limits), "");
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST(EpsConversion, without_the_interpreter_the_reason_names_it) {
  const test::EnvironmentGuard path("PATH", "/nowhere:relative::");
  EXPECT_EQ(Refusal(EpsFile()),
            "Ghostscript is needed for EPS, and there is no program gs on PATH");
}

// The interpreter says its number, makes more than it may, and would go on for good.
TEST(EpsConversion, an_interpreter_that_is_not_waited_for_is_ended_and_its_end_taken_over) {
  const test::ScratchDirectory directory;
  directory.Write("gs", "#!/bin/sh\necho more than the limit\nexec sleep 100917\n");
  std::filesystem::permissions(directory.Path("gs"), std::filesystem::perms::owner_all);
  const test::EnvironmentGuard path("PATH", directory.Path() + ":/usr/bin:/bin");
  EpsLimits limits;
  limits.bytes = 10;
  EXPECT_EQ(Refusal(EpsFile(), limits), "the interpreter made more than 10 bytes of it");
  siginfo_t information{};
  EXPECT_EQ(waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT), -1);
  EXPECT_EQ(errno, ECHILD) << "nothing waits to be reaped";
  for (const auto& process : std::filesystem::directory_iterator("/proc")) {
    const std::string line = test::ProcessFile(process.path(), "cmdline");
    EXPECT_EQ(line.find("sleep" + std::string(1, '\0') + "100917"), line.npos) << process.path();
  }
}

// Options from outside could take the interpreter out of its safer mode.
TEST(EpsConversion, the_users_options_for_the_interpreter_stay_outside) {
  const test::ScratchDirectory directory;
  directory.Write("gs",
                  "#!/bin/sh\necho \"Error: $1 $4 $5 [$GS_OPTIONS$GS_LIB] $LC_ALL $TMPDIR "
                  "$(readlink $TMPDIR)\" >&2\nexit 3\n");
  std::filesystem::permissions(directory.Path("gs"), std::filesystem::perms::owner_all);
  const test::EnvironmentGuard path("PATH", directory.Path() + ":/usr/bin:/bin");
  const test::EnvironmentGuard options("GS_OPTIONS", "-dNOSAFER");
  const test::EnvironmentGuard library("GS_LIB", "/somewhere");
  const test::EnvironmentGuard temporary("TMPDIR", directory.Path());
  const std::string refusal = Refusal(EpsFile());
  EXPECT_TRUE(
      refusal.starts_with("the interpreter ended with 3: Error: -q -dSAFER -K1048576 [] C "
                          "/dev/fd/3 " +
                          directory.Path() + "/rastrel-"))
      << refusal;
}

TEST(EpsConversion, a_program_in_the_present_directory_is_not_run) {
  const test::ScratchDirectory directory;
  directory.Write("gs", "#!/bin/sh\necho 'Error: taken' >&2\nexit 3\n");
  std::filesystem::permissions(directory.Path("gs"), std::filesystem::perms::owner_all);
  const test::PresentDirectory present(directory.Path());
  for (const char* const search : {".:/usr/bin:/bin", ":/usr/bin:/bin", "./:/usr/bin:/bin"}) {
    const test::EnvironmentGuard path("PATH", search);
    EXPECT_EQ(Refusal(EpsFile()), "") << search;
  }
}

TEST(EpsConversion, several_threads_convert_at_a_time) {
  std::vector<std::thread> threads;
  std::atomic<int> converted = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 3; ++round) {
        if (PdfFromEps(EpsFile())) ++converted;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(converted, 12);
}

TEST(EpsConversion, a_machine_that_can_not_start_it_is_reported) {
  {
    const os::SystemCallsGuard guard;
    os::Calls().memory_file = [](const char*, unsigned) {
      errno = EMFILE;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), "memfd_create: Too many open files"));
  }
  {
    const test::EnvironmentGuard temporary("TMPDIR", "/no/such/folder");
    EXPECT_TRUE(Says(Refusal(EpsFile()), "mkdir '/no/such/folder/rastrel-"));
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().pipe2 = [](int*, int) {
      errno = ENFILE;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), "pipe: Too many open files in system"));
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().fork = [] {
      errno = EAGAIN;
      return pid_t{-1};
    };
    EXPECT_EQ(Refusal(EpsFile()),
              "the interpreter can't be started: fork 'guardian': Resource temporarily unavailable "
              "(11)");
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().poll = [](pollfd*, nfds_t, int) {
      errno = ENOMEM;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), "poll: Cannot allocate memory"));
  }
}

}  // namespace
}  // namespace rastrel::interpreter
