#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/require.h"

namespace rastrel::bench {

/// The cost of a process from its start to its end, with the children that it waited for.
struct Cost {
  double milliseconds = 0;  ///< by the wall's clock
  double processorMilliseconds = 0;
  double peakMiB = 0;  ///< peak of memory, never less than its starter's at that time
};

/// Open descriptors that a program writes to; -1: nowhere.
struct Outputs {
  int output = -1;
  int reports = -1;  ///< its standard error
};

/// A child of the benchmark. Its start is bare, so that little of the cost is the benchmark's.
class Process {
 public:
  /// Starts a program: its name, sought in PATH if it has no slash, and its arguments. It has
  /// nothing to read.
  explicit Process(std::vector<std::string> arguments, Outputs outputs = {})
      : m_Name(arguments.front()) {
    std::vector<char*> list;
    for (std::string& argument : arguments) list.push_back(argument.data());
    list.push_back(nullptr);
    m_Id = ::vfork();
    if (m_Id == 0) {
      const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
      ::dup2(nothing, 0);
      ::dup2(outputs.output < 0 ? nothing : outputs.output, 1);
      ::dup2(outputs.reports < 0 ? nothing : outputs.reports, 2);
      ::execvp(list[0], list.data());
      ::_exit(NotInstalled);
    }
  }

  /// Starts a copy of this process that does the work and ends.
  explicit Process(const Work& work) : m_Name("the work in a process of its own") {
    m_Id = ::fork();
    if (m_Id == 0) {
      work();
      ::_exit(0);
    }
  }

  /// Waits for the end and returns the cost; nothing if there is no such program. One that ended in
  /// another way than by status 0 ends the benchmark, which then prints `said`.
  [[nodiscard]] std::optional<Cost> EndIfInstalled(const std::string& said = {}) const {
    int status = 0;
    rusage used{};
    if (m_Id < 0 || ::wait4(m_Id, &status, 0, &used) != m_Id) Fail(m_Name + " was not started");
    if (WIFEXITED(status) && WEXITSTATUS(status) == NotInstalled) return std::nullopt;
    if (status != 0)
      Fail(m_Name + " ended with status " + std::to_string(status) + (said.empty() ? "" : ": ") +
           said);
    return Cost{Now(Clock::Wall) - m_Begin, ProcessorMilliseconds(used),
                static_cast<double>(used.ru_maxrss) / 1024.0};
  }

  /// The same where a program that is missing is the benchmark's end too.
  Cost End(const std::string& said = {}) const {
    const auto cost = EndIfInstalled(said);
    if (!cost) Fail(m_Name + " is not installed");
    return *cost;
  }

 private:
  static constexpr int NotInstalled = 127;  // as a shell's status of that

  std::string m_Name;
  double m_Begin = Now(Clock::Wall);
  pid_t m_Id = -1;
};

/// Runs a program from its start to its end.
inline Cost Run(std::vector<std::string> arguments, Outputs outputs = {}) {
  return Process(std::move(arguments), outputs).End();
}

}  // namespace rastrel::bench
