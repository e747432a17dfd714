#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "interpreter/ghostscript.h"
#include "interpreter/task_place.h"
#include "interpreter/warm_start.h"
#include "tests/support/environment_guard.h"
#include "tests/support/scratch_directory.h"

/// Tools of the warm interpreter's tests: a data root with its program in it, and jobs in either
/// way.
namespace rastrel::interpreter::testing {

/// Whether there can be a warm interpreter here; else why not.
[[nodiscard]] std::string WhyNoWarm();

/// A job of a test.
struct TestJob {
  std::string device = "ppmraw";
  std::string content{};               ///< of its file
  std::vector<std::string> options{};  ///< before the file
  std::vector<std::string> after{};    ///< arguments after the file
  GhostscriptLimits limits{60, std::uint64_t{64} << 10, std::uint64_t{64} << 20};
};

/// How it ended, and all that it left.
struct TestEnd {
  bool warm = false;  ///< a warm interpreter did it
  ProcessEnd end;
  std::string output;                        ///< its standard output
  std::string messages;                      ///< its standard error
  std::map<std::string, std::string> files;  ///< of its directory

  /// Equal but for who did it.
  [[nodiscard]] bool IsAs(const TestEnd& other) const;
};

/// Who did it, how it ended, its messages and the names and sizes of its files.
std::ostream& operator<<(std::ostream& stream, const TestEnd& end);

/// A job that was started and not waited for.
struct RunningJob {
  explicit RunningJob(TaskPlace made) : place(std::move(made)) {}

  TaskPlace place;
  test::ScratchDirectory streams;
  std::optional<GuardedProcess> process;  // ended before the place is
};

class WarmFixture {
 public:
  WarmFixture();
  /// Ends the warm interpreters that it knows of.
  ~WarmFixture();

  /// Native path of the directory of warm interpreters.
  [[nodiscard]] std::string Directory() const { return m_Root.Path("warm"); }
  [[nodiscard]] WarmPlace Place() const;

  /// The options and the name of the warm interpreter for a job.
  [[nodiscard]] static WarmOptions Options(const TestJob& job);
  [[nodiscard]] static std::string Name(const TestJob& job);

  /// Starts one for such jobs and waits until it listens.
  void Warm(const TestJob& job, unsigned restSeconds = 600, unsigned jobs = 100'000);
  /// The process that listens for such jobs; 0 if none does.
  [[nodiscard]] pid_t Keeper(const TestJob& job) const;
  /// Kills it and waits until it listens no more.
  void Kill(const TestJob& job) const;

  /// Starts a job in the way that is there.
  [[nodiscard]] static std::unique_ptr<RunningJob> Start(const TestJob& job);
  /// Runs it to its end.
  [[nodiscard]] static TestEnd Run(const TestJob& job);
  /// The same by a program of its own.
  [[nodiscard]] static TestEnd RunByExec(const TestJob& job);

 private:
  test::ScratchDirectory m_Root;
  test::EnvironmentGuard m_Home{"RASTREL_HOME", m_Root.Path()};
  test::EnvironmentGuard m_Switch{"RASTREL_WARM", nullptr};
};

/// Whether a process of that number exists and is no zombie.
[[nodiscard]] bool Lives(pid_t process);

}  // namespace rastrel::interpreter::testing

/// Skips a test, with a message, where there can be no warm interpreter.
#define REQUIRE_WARM()                                                             \
  if (const auto why = rastrel::interpreter::testing::WhyNoWarm(); !why.empty()) { \
    GTEST_SKIP() << why;                                                           \
  }
