#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// Runs the program of the print shop's server in this one's place, with these arguments. It is a
/// program of its own, since the queue's database and the network's libraries would make every
/// other command start slower. Returns only by throwing CommandError(NotInstalled).
[[noreturn]] ExitStatus RunServerProgram(const std::vector<std::string>& arguments);

/// Runs that program as a child with this one's standard streams, and waits for its end. Returns
/// its exit status; nothing if it is not installed. Fails if it can't be started or is ended.
[[nodiscard]] Expected<std::optional<ExitStatus>> AskServerProgram(
    const std::vector<std::string>& arguments);

}  // namespace rastrel::cli
