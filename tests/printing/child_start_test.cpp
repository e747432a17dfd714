// The children's arguments and environment, and the host's resources that they leave alone.

#include <gtest/gtest.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <sstream>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/print_fixture.h"
#include "tests/support/wait_until.h"

namespace os = rastrel::os;
using rastrel::test::GoodEngine;
using rastrel::test::GoodRip;
using rastrel::test::Lines;

extern "C" char** environ;

namespace {

std::string LinkOf(int descriptor) {
  std::array<char, 4096> target{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
  return length < 0 ? "(none)" : std::string(target.data(), static_cast<std::size_t>(length));
}

class ChildStart : public rastrel::test::PrintTest {
 protected:
  [[nodiscard]] Lines Told(const std::string& program, std::string_view what) const {
    Lines found;
    std::istringstream lines(Root().Read(program + ".told"));
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with(what)) found.push_back(line.substr(what.size() + 1));
    return found;
  }
  [[nodiscard]] std::string ToldOnce(const std::string& program, std::string_view what) const {
    const Lines found = Told(program, what);
    return found.size() == 1 ? found.front() : "(" + std::to_string(found.size()) + " lines)";
  }
  [[nodiscard]] std::string RipDirectory() const { return Root().Path() + "/Queue\\rip\\"; }
  [[nodiscard]] std::string JobPath() { return os::Utf8FromWide(m_Ticket.m_JobFile.GetFullPath()); }
  [[nodiscard]] std::string PrefixPath() {
    const std::string job = JobPath();
    return job.substr(0, job.size() - 3) + ".psp";
  }
  void DescribeRip() { Program("Queue/rip/corerast.exe", "describe"); }
  void DescribeEngine() { Program("Queue/rip/coreodalis.exe", "describe"); }
};

TEST_F(ChildStart, gives_the_rip_its_options_the_prefix_and_the_job) {
  DescribeRip();
  Print();
  EXPECT_EQ(Told("corerast.exe", "argument"),
            (Lines{RipDirectory() + "corerast.exe", "-M", "-Q", "-m128", PrefixPath(), JobPath()}));
}

TEST_F(ChildStart, gives_an_installing_rip_an_option_more_and_no_prefix) {
  DescribeRip();
  m_Ticket.SetRIPInstallJob();
  Print();
  EXPECT_EQ(Told("corerast.exe", "argument"),
            (Lines{RipDirectory() + "corerast.exe", "-M", "-Q", "-m128", "-s", JobPath()}));
}

TEST_F(ChildStart, gives_a_path_with_blanks_and_foreign_letters_as_one_argument) {
  DescribeRip();
  Root().Write("job/shop \xC3\xA4 sign.ps", "%!PS\n");
  m_Ticket.SetJobFile(Root().Wide("job") + L"/shop \x00E4 sign.ps");
  Print();
  EXPECT_EQ(Told("corerast.exe", "argument"),
            (Lines{RipDirectory() + "corerast.exe", "-M", "-Q", "-m128", PrefixPath(), JobPath()}));
  EXPECT_TRUE(JobPath().ends_with("shop \xC3\xA4 sign.ps"));
}

TEST_F(ChildStart, gives_the_engine_its_options) {
  DescribeEngine();
  GivePages();
  Print();
  EXPECT_EQ(Told("coreodalis.exe", "argument"),
            (Lines{RipDirectory() + "coreodalis.exe", "-M", "-Q", "-k400", "-N", "-"}));
}

TEST_F(ChildStart, gives_the_engine_the_planar_option_last) {
  DescribeEngine();
  GivePages();
  m_Ticket.SetPlanar(true);
  Print();
  EXPECT_EQ(Told("coreodalis.exe", "argument"),
            (Lines{RipDirectory() + "coreodalis.exe", "-M", "-Q", "-k400", "-N", "-", "-tp"}));
}

TEST_F(ChildStart, puts_both_into_their_programs_directory) {
  DescribeRip();
  m_Ticket.SetRIPInstallJob();
  Print();
  EXPECT_EQ(ToldOnce("corerast.exe", "directory"), Root().Path("Queue/rip"));

  DescribeEngine();
  m_Ticket.SetDefaults();
  m_Ticket.Attach();
  GivePages();
  Print();
  EXPECT_EQ(ToldOnce("coreodalis.exe", "directory"), Root().Path("Queue/rip"));
}

TEST_F(ChildStart, gives_the_rip_the_hosts_input_and_two_pipes) {
  DescribeRip();
  m_Ticket.SetRIPInstallJob();
  Print();
  EXPECT_EQ(ToldOnce("corerast.exe", "0"), LinkOf(STDIN_FILENO));
  EXPECT_TRUE(ToldOnce("corerast.exe", "1").starts_with("pipe:"));
  EXPECT_TRUE(ToldOnce("corerast.exe", "2").starts_with("pipe:"));
  EXPECT_NE(ToldOnce("corerast.exe", "1"), ToldOnce("corerast.exe", "2"));
}

TEST_F(ChildStart, gives_the_engine_three_pipes_of_its_own) {
  DescribeEngine();
  GivePages();
  Print();
  const Lines streams = {ToldOnce("coreodalis.exe", "0"), ToldOnce("coreodalis.exe", "1"),
                         ToldOnce("coreodalis.exe", "2")};
  for (const std::string& stream : streams) EXPECT_TRUE(stream.starts_with("pipe:")) << stream;
  EXPECT_NE(streams[0], streams[1]);
  EXPECT_NE(streams[0], streams[2]);
  EXPECT_NE(streams[1], streams[2]);
}

TEST_F(ChildStart, gives_nothing_else_of_the_host) {
  const int inherited = ::dup(STDIN_FILENO);  // a host's descriptor without close-on-exec
  DescribeRip();
  m_Ticket.SetRIPInstallJob();
  Print();
  ::close(inherited);
  EXPECT_EQ(ToldOnce("corerast.exe", "other descriptors"), "0");
  EXPECT_EQ(ToldOnce("corerast.exe", "leads its session"), "yes");
  EXPECT_EQ(ToldOnce("corerast.exe", "terminal"), "no");
}

TEST_F(ChildStart, gives_usual_signals_whatever_the_host_has_set) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  DescribeRip();
  m_Ticket.SetRIPInstallJob();
  Print();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  std::signal(SIGPIPE, handler);
  EXPECT_EQ(ToldOnce("corerast.exe", "broken pipe signal"), "as usual");
}

TEST_F(ChildStart, gives_the_hosts_environment) {
  const rastrel::test::EnvironmentGuard guard("RASTREL_TEST_WORD", "some words");
  Engine("printf '%s' \"$RASTREL_TEST_WORD\" > \"$RASTREL_HOME/word\"; cat > /dev/null\n");
  Print();
  EXPECT_EQ(Root().Read("word"), "some words");
}

constexpr const char* WriteJobVariable =
    "printf '%s' \"$RASTREL_JOB\" > \"$RASTREL_HOME/name\"; cat > /dev/null\n";

TEST_F(ChildStart, gives_the_engine_the_jobs_name) {
  const rastrel::test::EnvironmentGuard guard("RASTREL_JOB", "the host's");
  Engine(WriteJobVariable);
  m_Ticket.m_JobName = L"Caf\u00e9 sign";
  Print();
  EXPECT_EQ(Root().Read("name"), "Caf\xC3\xA9 sign");
}

TEST_F(ChildStart, gives_the_engine_no_other_name_if_the_job_has_none) {
  const rastrel::test::EnvironmentGuard guard("RASTREL_JOB", "the host's");
  Engine(WriteJobVariable);
  m_Ticket.m_JobName = L"";
  Print();
  EXPECT_EQ(Root().Read("name"), "");
}

/// Whether a spool is requested and allowed, and the word that the engine gets.
struct KeptCase {
  bool isRequested = false;
  bool isAllowed = false;
  const char* heard = "removed";
};

class KeptPages : public ChildStart, public ::testing::WithParamInterface<KeptCase> {};

INSTANTIATE_TEST_SUITE_P(Spool, KeptPages,
                         ::testing::Values(KeptCase{}, KeptCase{true, false, "removed"},
                                           KeptCase{false, true, "removed"},
                                           KeptCase{true, true, "kept"}),
                         [](const auto& test) {
                           return std::string(test.param.isRequested ? "requested"
                                                                     : "not_requested") +
                                  (test.param.isAllowed ? "_allowed" : "_not_allowed");
                         });

// The page list says "reprint" of every page, so that the engine can't know it from there.
TEST_P(KeptPages, are_told_to_the_engine) {
  const rastrel::test::EnvironmentGuard guard("RASTREL_PAGES", "the host's");
  Engine("printf '%s' \"$RASTREL_PAGES\" > \"$RASTREL_HOME/kept\"; cat > /dev/null\n");
  m_Ticket.m_JobData.SpoolRequested = GetParam().isRequested;
  m_Ticket.m_JobData.SpoolAllowed = GetParam().isAllowed;
  Print();
  EXPECT_EQ(Root().Read("kept"), GetParam().heard);
}

TEST_F(ChildStart, leaves_a_host_without_standard_streams_working) {
  const std::array<int, 3> saved = {::dup(0), ::dup(1), ::dup(2)};
  for (const int stream : {0, 1, 2}) ::close(stream);
  Print();
  for (const int stream : {0, 1, 2}) {
    ::dup2(saved[static_cast<std::size_t>(stream)], stream);
    ::close(saved[static_cast<std::size_t>(stream)]);
  }
  EXPECT_EQ(End(), "active: no error");
  EXPECT_TRUE(Root().Read("engine.input").ends_with("end   \n"));
}

TEST_F(ChildStart, leaves_a_hosts_own_children_for_the_host_to_reap) {
  pid_t own = 0;
  std::string program = "/bin/sh";
  std::string option = "-c";
  std::string script = "exit 7";
  char* const arguments[] = {program.data(), option.data(), script.data(), nullptr};
  // One that ends at once, so that it is a zombie while the job's children end.
  ASSERT_EQ(::posix_spawn(&own, program.c_str(), nullptr, nullptr, arguments, environ), 0);
  siginfo_t information{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(own), &information, WEXITED | WNOWAIT), 0);
  Print();
  EXPECT_EQ(End(), "active: no error");
  int status = 0;
  EXPECT_EQ(::waitpid(own, &status, 0), own);
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

std::atomic<int> brokenPipes;
void CountBrokenPipe(int) { ++brokenPipes; }

// Lets the engine end before its input is written.
int SpawnAndWait(pid_t* id, const char* path, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const arguments[],
                 char* const environment[]) {
  const int error = ::posix_spawn(id, path, actions, attributes, arguments, environment);
  siginfo_t information{};
  if (error == 0) ::waitid(P_PID, static_cast<id_t>(*id), &information, WEXITED | WNOWAIT);
  return error;
}

TEST_F(ChildStart, of_an_engine_that_is_gone_before_its_input_aborts_the_job_without_a_signal) {
  brokenPipes = 0;
  const auto handler = std::signal(SIGPIPE, CountBrokenPipe);
  const os::SystemCallsGuard guard;
  os::Calls().spawn = SpawnAndWait;
  GivePages();
  Engine("exit 1\n");
  Print();
  std::signal(SIGPIPE, handler);
  EXPECT_EQ(brokenPipes, 0);
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, printing, printed, aborted");
  EXPECT_TRUE(
      HasLogged("[Print] Couldn't write CFM2 to Odalis, errno: " + std::to_string(EPIPE) + "|"));
  EXPECT_EQ(Errors(), Lines{});
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(rastrel::test::HasChildren());
  EXPECT_TRUE(Root().Has("kept/A/pixels"));
}

TEST_F(ChildStart, of_an_engine_that_is_gone_before_its_input_deletes_the_rips_files) {
  // The engine closes its input, says so, and stays.
  Engine("exec <&-\n: > \"$RASTREL_HOME/closed\"\n" + std::string(rastrel::test::Hang));
  static std::string closed;
  closed = Root().Path("closed");
  const os::SystemCallsGuard guard;
  os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) {
    const bool input =
        std::string_view(static_cast<const char*>(bytes), count).starts_with(">> --");
    EXPECT_TRUE(!input ||
                rastrel::test::WaitUntil([] { return ::access(closed.c_str(), F_OK) == 0; }));
    return ::write(descriptor, bytes, count);
  };
  RequestSpool();
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(Root().Has("pages"));
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
}

}  // namespace
