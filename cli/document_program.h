#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Runs the program that opens documents in this one's place, with these arguments. It is a program
/// of its own, since the libraries for fonts and graphics would make every other command start
/// slower. Returns only by throwing CommandError(NotInstalled).
[[noreturn]] ExitStatus RunDocumentProgram(const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
