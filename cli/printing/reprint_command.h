#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel reprint`
[[nodiscard]] ExitStatus ReprintCommand(const Invocation& invocation);

}  // namespace rastrel::cli
