#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "interpreter/guarded_process.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::interpreter {

/// An interpreter that does one task and ends.
struct ShortRun {
  std::string program;                 ///< as FindGhostscript found it
  std::vector<std::string> arguments;  ///< as GhostscriptRequest has them
  std::string temporary;               ///< native directory for its temporary files
  std::string directory{};             ///< its working directory; empty: this process's own
  int input = -1;                      ///< its standard input; -1: none
  std::chrono::milliseconds time{0};   ///< it is killed after that
  std::size_t outputLimit = 0;         ///< bytes of standard output to take; 0: it has none
};

/// How it ended.
struct ShortRunEnd {
  ProcessEnd end;
  std::string output;    ///< its standard output to the end
  std::string messages;  ///< the end of its standard error
};

/// "the interpreter can't be started", and why.
[[nodiscard]] Failure NotStarted(const Failure& failure);

/// Runs it to its end. The failure is a text for the user: it can't be started, took too long or
/// made too much, and was killed then. Takes as much memory as the output and a few KiB.
[[nodiscard]] Expected<ShortRunEnd> RunToEnd(const ShortRun& run);

}  // namespace rastrel::interpreter
