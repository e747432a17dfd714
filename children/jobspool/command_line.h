#pragma once

#include <span>
#include <string>

#include "rastrel/platform/os/expected.h"

/// The queue program: one file is converted into the files that the library reads, or measured.
namespace rastrel::jobspool {

/// The library's command line.
struct CommandLine {
  bool measure = false;  ///< "-q -ps FILE": measure the page; "-ps -q FILE": convert the file
  std::string file;      ///< native path
};

/// Reads the arguments after the program's name. The order of the two options says the task. Any
/// other arguments are a failure with the code BadInput.
[[nodiscard]] Expected<CommandLine> ReadCommandLine(std::span<const char* const> arguments);

}  // namespace rastrel::jobspool
