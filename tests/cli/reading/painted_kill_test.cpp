// Ends `inspect --painted` from outside while two interpreters are at work on an endless job each.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "interpreter/interpreter.h"
#include "tests/cli/command_runner.h"
#include "tests/support/process_file.h"
#include "tests/support/scratch_directory.h"
#include "tests/support/wait_until.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* EndlessJob = "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 99 99\n{} loop\n";

// Processes that were started with that temporary directory, or work in one below it: the command,
// its guardian, and the interpreter. A zombie has no environment and no working directory.
std::vector<std::string> NamesWith(const std::string& temporary) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry("/proc", error), last; !error && entry != last;
       entry.increment(error)) {
    const std::string variables = '\0' + test::ProcessFile(entry->path(), "environ");
    std::error_code unreadable;
    const std::string work = fs::read_symlink(entry->path() / "cwd", unreadable).string();
    if (variables.find(std::string(1, '\0') + "TMPDIR=" + temporary) == variables.npos &&
        !work.starts_with(temporary + "/")) {
      continue;
    }
    names.push_back(test::ProcessFile(entry->path(), "comm"));
  }
  return names;
}

pid_t StartInspecting(const std::string& job, const std::string& temporary) {
  const pid_t process = fork();
  if (process == 0) {
    setenv("TMPDIR", temporary.c_str(), 1);
    execl(RASTREL_COMMAND, "rastrel", "inspect", "--painted", "--jobs", "2", job.c_str(),
          job.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  return process;
}

class PaintedKill : public testing::TestWithParam<int> {};

TEST_P(PaintedKill, leaves_no_process_and_no_file) {
  if (interpreter::FindGhostscript().empty()) GTEST_SKIP() << "Ghostscript is not installed";
  const test::ScratchDirectory place;
  const test::ScratchDirectory temporary;
  place.Write("endless.ps", EndlessJob);
  const pid_t command = StartInspecting(place.Path("endless.ps"), temporary.Path());
  const auto interprets = [&] {
    const auto names = NamesWith(temporary.Path());
    return std::count(names.begin(), names.end(), "gs\n") == 2;
  };
  ASSERT_TRUE(test::WaitUntil(interprets));
  EXPECT_FALSE(fs::is_empty(temporary.Path()));
  ASSERT_EQ(kill(command, GetParam()), 0);
  int status = 0;
  ASSERT_EQ(waitpid(command, &status, 0), command);
  EXPECT_TRUE(test::WaitUntil([&] { return NamesWith(temporary.Path()).empty(); }));
  EXPECT_TRUE(fs::is_empty(temporary.Path()));
}

INSTANTIATE_TEST_SUITE_P(BySignal, PaintedKill, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

TEST(PaintedLimit, of_time_ends_an_endless_file_and_says_so) {
  test::CommandRunner command(test::CommandRunner::Children::None);
  command.Place().Write("endless.ps", EndlessJob);
  command.Set("RASTREL_RIP_TIMEOUT", "1");
  const auto result = command.Run({"inspect", "--painted", "endless.ps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error,
            "rastrel: endless.ps: the painting was given up: the interpreter took more than 1 "
            "second\n");
  EXPECT_NE(result.output.find("; painted: not known\n"), std::string::npos) << result.output;
}

TEST(PaintedLimit, of_the_disk_ends_a_file_that_fills_it_and_says_so) {
  test::CommandRunner command(test::CommandRunner::Children::None);
  const test::ScratchDirectory temporary;
  command.Place().Write("filling.ps",
                        "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 99 99\n/s 65000 string def "
                        "{ null (w+) .tempfile exch pop /f exch def 100 { f s writestring } repeat "
                        "} loop\n");
  command.Set("RASTREL_RIP_TEMP", "50");
  command.Set("TMPDIR", temporary.Path());
  const auto result = command.Run({"inspect", "--painted", "filling.ps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(
      result.error,
      "rastrel: filling.ps: the painting was given up: the interpreter's files take more than "
      "50 MiB, or are more than 10000\n");
  EXPECT_TRUE(fs::is_empty(temporary.Path()));
}

TEST(PaintedFile, reaches_nothing_but_itself) {
  test::CommandRunner command(test::CommandRunner::Children::None);
  const auto refusal = [&](const std::string& body) {
    command.Place().Write("reaching.ps",
                          "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 99 99\n" + body + "\n");
    return command.Run({"inspect", "--painted", "reaching.ps"}).error;
  };
  const std::string made = command.Place().Path("made");
  for (const std::string& body : std::vector<std::string>{
           "(/etc/passwd) (r) file pop", "(%pipe%touch " + made + ") (w) file pop",
           "(%pipe%nc localhost 9) (r) file pop", "(" + made + ") (w) file pop"}) {
    EXPECT_NE(refusal(body).find("invalidfileaccess"), std::string::npos) << body;
  }
  EXPECT_FALSE(fs::exists(made));
}

TEST(PaintedFile, is_not_painted_by_a_program_in_the_present_directory) {
  test::CommandRunner command(test::CommandRunner::Children::None);
  command.Place().Write("plain.ps", "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 99 99\nshowpage\n");
  command.Place().Write("gs", "#!/bin/sh\ntouch '" + command.Place().Path("taken") + "'\n");
  fs::permissions(command.Place().Path("gs"), fs::perms::owner_all);
  for (const char* const search : {".:/usr/bin:/bin", ":/usr/bin:/bin"}) {
    command.Set("PATH", search);
    EXPECT_EQ(command.Run({"inspect", "--painted", "plain.ps"}).status, 0);
    EXPECT_NE(command.Run({"doctor"}).output.find("ghostscript: version"), std::string::npos);
  }
  EXPECT_FALSE(command.Place().Has("taken"));
}

}  // namespace
}  // namespace rastrel::cli
