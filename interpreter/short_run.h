#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "interpreter/guarded_process.h"
#include "interpreter/task_place.h"
#include "interpreter/wall.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// An interpreter that does one task and ends. It works in the place's directory.
struct ShortRun {
  std::string program;                 ///< as FindGhostscript found it
  std::vector<std::string> arguments;  ///< as GhostscriptRequest has them
  int input = -1;                      ///< its standard input; -1: none
  std::vector<WallPath> files{};       ///< besides the place and `input`
  std::chrono::milliseconds time{0};   ///< it is killed after that
  std::size_t outputLimit = 0;         ///< bytes of standard output to take; 0: it has none
  std::uint64_t memoryKibibytes = 0;   ///< as GhostscriptLimits has it
  std::uint64_t workBytes = 0;         ///< of all its files at a time, deleted ones too
  std::uint64_t workFiles = 0;         ///< number of these
};

/// How it ended.
struct ShortRunEnd {
  ProcessEnd end;
  std::string output;    ///< its standard output to the end
  std::string messages;  ///< the end of its standard error
};

/// "the interpreter can't be started", and why.
[[nodiscard]] Failure NotStarted(const Failure& failure);

/// The first 500 of foreign bytes as text for a person, cleaned (os::CleanLine).
[[nodiscard]] std::string PlainLine(std::string_view bytes);

/// The first of the messages' lines that names an error, or else the last, as a PlainLine; perhaps
/// empty. It may come from the job.
[[nodiscard]] std::string ErrorLineOf(const std::string& messages);

/// Why it did not end well, in one line that may come from the job; empty if it did.
[[nodiscard]] std::string ReasonOfEnd(const ShortRunEnd& run);

/// Runs it to its end. The failure is a text for the user: it can't be started, took too long, or
/// made too much, and was killed then. The user's limits of runs (settings.h) on time, memory and
/// temporary files hold as well, where they are lower. Takes as much memory as the output and a few
/// KiB.
[[nodiscard]] Expected<ShortRunEnd> RunToEnd(const ShortRun& run, TaskPlace& place);

}  // namespace rastrel::interpreter
