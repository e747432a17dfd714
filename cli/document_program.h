#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Runs the program that opens documents in this one's place, with these words of the command line.
/// It is a program of its own, since fonts, graphics and what draws them would make every other
/// command start slower. Comes back only by throwing CommandError(NotInstalled).
[[noreturn]] ExitStatus RunDocumentProgram(const std::vector<std::string>& words);

}  // namespace rastrel::cli
