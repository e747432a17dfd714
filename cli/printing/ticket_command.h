#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel ticket show`
[[nodiscard]] ExitStatus ShowTicketCommand(const Invocation& invocation);
/// `rastrel ticket hold` and `rastrel ticket release`
[[nodiscard]] ExitStatus HoldTicketCommand(const Invocation& invocation, bool hold);

}  // namespace rastrel::cli
