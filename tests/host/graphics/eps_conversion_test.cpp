#include "host/graphics/eps_conversion.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "rastrel/platform/os/system_calls.h"
#include "tests/host/graphics/graphic_files.h"
#include "tests/support/environment_guard.h"

namespace rastrel::graphics {
namespace {

using namespace std::chrono_literals;
using test::EpsFile;

std::wstring Refusal(const std::string& bytes, const ConversionLimits& limits = {}) {
  const auto converted = PdfFromEps(bytes, limits);
  return converted ? L"" : converted.Error();
}

bool Says(const std::wstring& text, const std::wstring& words) {
  return text.find(words) != std::wstring::npos;
}

TEST(EpsConversion, a_file_becomes_a_pdf) {
  const auto converted = PdfFromEps(EpsFile());
  ASSERT_TRUE(converted);
  EXPECT_TRUE(converted->starts_with("%PDF-"));
}

TEST(EpsConversion, an_error_in_the_file_is_told_in_the_interpreters_words) {
  EXPECT_TRUE(Says(Refusal(EpsFile("nonsense\n")), L"Error: /undefined in nonsense"));
}

TEST(EpsConversion, a_file_that_does_not_end_is_ended) {
  ConversionLimits limits;
  limits.time = 500ms;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Refusal(EpsFile("{} loop\n"), limits),
            L"the interpreter took more than 500 milliseconds");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST(EpsConversion, a_file_that_makes_more_than_the_limit_is_ended) {
  ConversionLimits limits;
  limits.bytes = 100;
  EXPECT_EQ(Refusal(EpsFile(), limits), L"the interpreter made more than 100 bytes of it");
}

TEST(EpsConversion, a_file_that_asks_for_all_memory_is_refused) {
  ConversionLimits limits;
  limits.memoryKibibytes = 50'000;
  EXPECT_TRUE(Says(Refusal(EpsFile("[ { 1000000 string } loop\n"), limits), L"VMerror"));
}

TEST(EpsConversion, a_file_reads_and_writes_no_other) {
  const test::ScratchDirectory directory;
  directory.Write("there", "secret");
  const std::string there = directory.Path("there");
  EXPECT_TRUE(Says(Refusal(EpsFile("(" + there + ") (r) file pop\n")), L"invalidfileaccess"));
  EXPECT_TRUE(Says(Refusal(EpsFile("(" + there + ") (w) file pop\n")), L"invalidfileaccess"));
  EXPECT_NE(Refusal(EpsFile("(" + there + ") deletefile\n")), L"");
  EXPECT_NE(Refusal(EpsFile("(%pipe%touch " + directory.Path("made") + ") (w) file pop\n")), L"");
  EXPECT_FALSE(directory.Has("made"));
  EXPECT_EQ(directory.Read("there"), "secret");
}

TEST(EpsConversion, a_file_that_talks_without_end_does_not_fill_memory) {
  ConversionLimits limits;
  limits.time = 1s;
  EXPECT_EQ(Refusal(EpsFile("{(words words words) ==} loop\n"), limits),
            L"the interpreter took more than 1000 milliseconds");
}

TEST(EpsConversion, no_file_of_the_interpreters_is_left) {
  const test::ScratchDirectory directory;
  const test::EnvironmentGuard temporary("TMPDIR", directory.Path());
  ConversionLimits limits;
  limits.time = 500ms;
  EXPECT_EQ(Refusal(EpsFile()), L"");
  EXPECT_NE(Refusal(EpsFile("1 0 0 setrgbcolor 100 200 20 5 rectfill {} loop\n"), limits), L"");
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

TEST(EpsConversion, without_the_interpreter_the_reason_names_it) {
  const test::EnvironmentGuard path("PATH", "/nowhere:relative::");
  EXPECT_EQ(Refusal(EpsFile()),
            L"Ghostscript is needed for EPS, and there is no program gs on PATH");
}

TEST(EpsConversion, a_machine_that_can_not_start_it_is_told) {
  {
    const os::SystemCallsGuard guard;
    os::Calls().memory_file = [](const char*, unsigned) {
      errno = EMFILE;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), L"memfd_create: Too many open files"));
  }
  {
    const test::EnvironmentGuard temporary("TMPDIR", "/no/such/folder");
    EXPECT_TRUE(Says(Refusal(EpsFile()), L"mkdir '/no/such/folder/rastrel-"));
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().pipe2 = [](int*, int) {
      errno = ENFILE;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), L"pipe: Too many open files in system"));
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().spawn = [](pid_t*, const char*, const posix_spawn_file_actions_t*,
                           const posix_spawnattr_t*, char* const*, char* const*) { return EAGAIN; };
    EXPECT_TRUE(Says(Refusal(EpsFile()), L"Resource temporarily unavailable"));
  }
  {
    const os::SystemCallsGuard guard;
    os::Calls().poll = [](pollfd*, nfds_t, int) {
      errno = ENOMEM;
      return -1;
    };
    EXPECT_TRUE(Says(Refusal(EpsFile()), L"poll: Cannot allocate memory"));
  }
}

}  // namespace
}  // namespace rastrel::graphics
