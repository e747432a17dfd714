#pragma once

#include <span>
#include <string>
#include <variant>

#include "interpreter/exit_status.h"

/// The queue program: one file becomes what a conversion reads, or is measured.
namespace rastrel::jobspool {

/// What the library asks for.
struct CommandLine {
  bool measure = false;  ///< "-q -ps FILE": tell the page's size; "-ps -q FILE": convert the file
  std::string file;      ///< native path
};

/// Reads the words behind the program's name. The order of the two options tells the task. Any
/// other words are a failure with ExitStatus::BadInput.
[[nodiscard]] std::variant<CommandLine, interpreter::RunFailure> ReadCommandLine(
    std::span<const char* const> arguments);

}  // namespace rastrel::jobspool
