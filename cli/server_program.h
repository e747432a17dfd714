#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Runs the program of the print shop's server in this one's place, with these arguments. It is a
/// program of its own, since the queue's database and the network's libraries would make every
/// other command start slower. Returns only by throwing CommandError(NotInstalled).
[[noreturn]] ExitStatus RunServerProgram(const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
