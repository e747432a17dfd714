#include "rastrel/printing/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <type_traits>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "tests/support/environment_guard.h"
#include "tests/support/failing_memory.h"
#include "tests/support/library_fixture.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/present_directory.h"
#include "tests/support/private_member.h"

namespace {

namespace fs = std::filesystem;
using PrintingThread::CCPHelper;
using rastrel::test::EnvironmentGuard;
using rastrel::test::LibraryTest;
using rastrel::test::PlaceOf;
using rastrel::test::ScratchDirectory;

class CpHelper : public LibraryTest {
 protected:
  void SetUp() override { m_Mark = m_Library.LogMark(); }
  [[nodiscard]] std::string Logged() const { return m_Library.LogTextsBehind(m_Mark); }

  // A program in a directory of its own, as a script of the shell.
  std::wstring Program(const std::string& name, const std::string& body) const {
    m_Scratch.Write(name, "#!/bin/sh\n" + body);
    fs::permissions(m_Scratch.Path(name), fs::perms::owner_all);
    return m_Scratch.Wide(name);
  }

  // Starts it with its output in a file, waits for its end, and returns the output.
  std::string OutputOf(CCPHelper& helper) const {
    const int output =
        ::open(m_Scratch.Path("output").c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    helper.m_hStdOutput = output;
    const bool started = helper.Start();
    ::close(output);
    if (!started) return "(not started)";
    EXPECT_LT(0U, helper.m_ProcessId);
    WaitFor(helper);
    return m_Scratch.Read("output");
  }

  static int WaitFor(CCPHelper& helper) {
    pollfd end{helper.m_hProcess, POLLIN, 0};
    ::poll(&end, 1, 20'000);
    const auto state = rastrel::os::TakeExitState(helper.m_hProcess);
    ::close(helper.m_hProcess);
    if (!state || state->running || !state->byItself) return -1;
    return state->status;
  }

  ScratchDirectory m_Scratch;
  std::size_t m_Mark = 0;
};

constexpr const char* TellArguments = "for one in \"$@\"; do printf '[%s]' \"$one\"; done\n";

TEST_F(CpHelper, the_fields_stand_in_order) {
  EXPECT_TRUE(std::has_virtual_destructor_v<CCPHelper>);
  const CCPHelper helper(L"x");
  rastrel::test::ExpectInOrder({PlaceOf(helper), PlaceOf(helper.m_hProcess),
                                PlaceOf(helper.m_ProcessId), PlaceOf(helper.m_CreationFlags),
                                PlaceOf(helper.m_hStdInput), PlaceOf(helper.m_hStdOutput),
                                PlaceOf(helper.m_hStdError)});
}

TEST_F(CpHelper, a_fresh_helper_has_no_process_and_this_processs_streams) {
  const CCPHelper helper(L"x");
  EXPECT_EQ(helper.m_hProcess, -1);
  EXPECT_EQ(helper.m_ProcessId, 0U);
  EXPECT_EQ(helper.m_CreationFlags, 0U);
  EXPECT_EQ(helper.m_hStdInput, 0);
  EXPECT_EQ(helper.m_hStdOutput, 1);
  EXPECT_EQ(helper.m_hStdError, 2);
}

TEST_F(CpHelper, the_command_line_is_appended_with_quotes_and_a_blank_at_its_end) {
  CCPHelper helper(L"a b");
  helper.AddArgument(L"c");
  std::wstring line = L"> ";
  helper.GetCommandLine(line);
  EXPECT_EQ(line, L"> \"a b\" \"c\" ");
  helper.AddArgument(L"");
  helper.AddArgument(L"q\"q");
  line.clear();
  helper.GetCommandLine(line);
  EXPECT_EQ(line, L"\"a b\" \"c\" \"\" \"q\"q\" ");
}

TEST_F(CpHelper, an_argument_with_blanks_reaches_the_child_as_one) {
  CCPHelper helper(Program("show", TellArguments));
  for (const wchar_t* const argument : {L"one two", L"", L"-x", L"C:\\dir\\", L"$HOME `x` *",
                                        L"\u00fc\u20ac", L"tab\there", L"line\nhere"})
    helper.AddArgument(argument);
  EXPECT_EQ(OutputOf(helper),
            "[one two][][-x][C:\\dir\\][$HOME `x` *][\xC3\xBC\xE2\x82\xAC][tab\there][line\nhere]");
}

TEST_F(CpHelper, an_argument_with_a_double_quote_is_split_by_it) {
  CCPHelper helper(Program("show", TellArguments));
  helper.AddArgument(L"a\" \"b");
  helper.AddArgument(L"c");
  EXPECT_EQ(OutputOf(helper), "[a][b][c]");
}

TEST_F(CpHelper, argument_0_is_the_executables_path) {
  fs::create_symlink("/bin/sh", m_Scratch.Path("named-shell"));
  CCPHelper helper(m_Scratch.Wide("named-shell"));
  helper.AddArgument(L"-c");
  helper.AddArgument(L"IFS=; printf %s $0");
  EXPECT_EQ(m_Scratch.Path("named-shell"), OutputOf(helper));
}

TEST_F(CpHelper, the_child_gets_the_environment_of_the_helpers_making) {
  std::optional<EnvironmentGuard> before;
  before.emplace("RASTREL_TEST_VARIABLE", "first = value");
  CCPHelper helper(Program("show", "printf %s \"$RASTREL_TEST_VARIABLE\"\n"));
  const EnvironmentGuard after("RASTREL_TEST_VARIABLE", "second");
  EXPECT_EQ(OutputOf(helper), "first = value");
}

TEST_F(CpHelper, the_child_starts_in_its_executables_directory) {
  const ScratchDirectory elsewhere;
  const rastrel::test::PresentDirectory present(elsewhere.Path());
  CCPHelper helper(Program("sub dir/show", "pwd\n"));
  EXPECT_EQ(m_Scratch.Path("sub dir") + "\n", OutputOf(helper));
  EXPECT_EQ(fs::path(elsewhere.Path()), fs::current_path());
}

TEST_F(CpHelper, a_library_path_with_backslashes_and_another_case_is_found) {
  Program("Rip/Show.exe", "echo found\n");
  CCPHelper helper(m_Scratch.Wide() + L"\\rip\\show.exe");
  EXPECT_EQ(OutputOf(helper), "found\n");
}

TEST_F(CpHelper, the_three_streams_are_given) {
  m_Scratch.Write("input", "from the input");
  CCPHelper helper(Program("show", "cat; echo to the error >&2; exit 7\n"));
  const int input = ::open(m_Scratch.Path("input").c_str(), O_RDONLY | O_CLOEXEC);
  const int output = ::open(m_Scratch.Path("output").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  const int error = ::open(m_Scratch.Path("error").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  helper.m_hStdInput = input;
  helper.m_hStdOutput = output;
  helper.m_hStdError = error;
  ASSERT_TRUE(helper.Start());
  EXPECT_EQ(WaitFor(helper), 7);
  EXPECT_EQ(m_Scratch.Read("output"), "from the input");
  EXPECT_EQ(m_Scratch.Read("error"), "to the error\n");
  for (const int descriptor : {input, output, error}) ::close(descriptor);
}

TEST_F(CpHelper, without_handles_the_child_has_this_processs_streams) {
  for (const bool null : {false, true}) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    CCPHelper helper(Program("show", "echo out; echo err >&2\n"));
    if (null) helper.m_hStdInput = helper.m_hStdOutput = helper.m_hStdError = 0;
    EXPECT_TRUE(helper.Start());
    WaitFor(helper);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "err\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
  }
}

TEST_F(CpHelper, the_child_has_no_other_descriptor_and_a_session_of_its_own) {
  const int open = ::open("/dev/null", O_RDONLY);  // inheritable
  CCPHelper helper(Program("show",
                           "ls /proc/$$/fd | tr '\\n' ' '; cut -d ' ' -f 6 /proc/$$/stat | tr -d "
                           "'\\n'; echo \" $$\"\n"));
  const std::string output = OutputOf(helper);
  ::close(open);
  const std::string id = std::to_string(helper.m_ProcessId);
  EXPECT_TRUE(output.ends_with(id + " " + id + "\n")) << output;
  // The shell itself holds its script open, at 10 or 255.
  EXPECT_TRUE(output.starts_with("0 1 10 2 ") || output.starts_with("0 1 2 255 ")) << output;
}

TEST_F(CpHelper, a_program_that_is_missing_is_named_with_error_2) {
  CCPHelper helper(m_Scratch.Wide() + L"\\missing.exe");
  EXPECT_FALSE(helper.Start());
  EXPECT_EQ("[Print] Couldn't start '" + m_Scratch.Path() + "\\missing.exe', error: 2\r\n",
            Logged());
  EXPECT_EQ(helper.m_hProcess, -1);
  EXPECT_EQ(helper.m_ProcessId, 0U);
}

TEST_F(CpHelper, a_program_that_may_not_be_executed_is_named_with_its_error) {
  m_Scratch.Write("plain", "no program");
  CCPHelper helper(m_Scratch.Wide("plain"));
  EXPECT_FALSE(helper.Start());
  EXPECT_EQ("[Print] Couldn't start '" + m_Scratch.Path("plain") + "', error: 13\r\n", Logged());
}

TEST_F(CpHelper, a_start_that_failed_may_be_repeated) {
  CCPHelper helper(m_Scratch.Wide("show"));
  helper.AddArgument(L"kept");
  EXPECT_FALSE(helper.Start());
  EXPECT_FALSE(helper.Start());
  Program("show", TellArguments);
  EXPECT_EQ(OutputOf(helper), "[kept]");
}

TEST_F(CpHelper, a_failed_start_leaves_no_descriptor) {
  CCPHelper helper(m_Scratch.Wide("missing"));
  EXPECT_FALSE(helper.Start());
  const std::size_t before = rastrel::test::OpenDescriptors();
  for (int round = 0; round < 10; ++round) EXPECT_FALSE(helper.Start());
  EXPECT_EQ(before, rastrel::test::OpenDescriptors());
}

TEST_F(CpHelper, the_child_gets_a_relative_data_root_as_this_process_sees_it) {
  const EnvironmentGuard root("RASTREL_HOME", "relative/root");
  const std::string seen = rastrel::os::DataRoot();
  EXPECT_TRUE(seen.starts_with('/') && seen.ends_with("/relative/root")) << seen;
  CCPHelper helper(Program("tool", "printf '%s' \"$RASTREL_HOME\"\n"));
  EXPECT_EQ(OutputOf(helper), seen);
}

TEST_F(CpHelper, without_memory_for_the_environment_it_says_so_and_starts_nothing) {
  std::optional<CCPHelper> helper;
  {
    const rastrel::test::FailingMemory failing;
    helper.emplace(Program("show", "touch started\n"));
  }
  EXPECT_FALSE(helper->Start());
  EXPECT_EQ(Logged(), "[Print] Low on resources");
  EXPECT_EQ(helper->m_hProcess, -1);
  EXPECT_FALSE(m_Scratch.Has("started"));
}

}  // namespace
