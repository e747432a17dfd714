#pragma once

#include <span>
#include <string>
#include <variant>

#include "interpreter/exit_status.h"

namespace rastrel::corerast {

/// What the library asks for. Paths are native ones.
struct CommandLine {
  bool install = false;  ///< "-s": an install job, which makes no pages
  std::string prefix;    ///< may be empty
  std::string job;
};

/// Reads "[-M] [-Q] [-m<n>] [-s] [PREFIX] JOB", without the program's name. "-M", "-Q" and "-m<n>"
/// are taken and change nothing. Any other word that begins with '-', and less than one or more
/// than two paths, are failures with interpreter::ExitStatus::BadInput.
[[nodiscard]] std::variant<CommandLine, interpreter::RunFailure> ReadCommandLine(
    std::span<const char* const> arguments);

}  // namespace rastrel::corerast
