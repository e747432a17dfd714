#pragma once

#include <span>
#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::corerast {

/// The library's command line. Paths are native ones.
struct CommandLine {
  bool install = false;  ///< "-s": an install job, which makes no pages
  std::string prefix;    ///< may be empty
  std::string job;
};

/// Reads "[-M] [-Q] [-m<n>] [-s] [PREFIX] JOB", without the program's name. "-M", "-Q" and "-m<n>"
/// are taken and change nothing. Any other argument that begins with '-', and less than one or more
/// than two paths, are failures with the code BadInput.
[[nodiscard]] Expected<CommandLine> ReadCommandLine(std::span<const char* const> arguments);

}  // namespace rastrel::corerast
