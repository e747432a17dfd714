#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel printers`
[[nodiscard]] ExitStatus ListPrintersCommand(const Invocation& invocation);
/// `rastrel modes`
[[nodiscard]] ExitStatus ListModesCommand(const Invocation& invocation);

}  // namespace rastrel::cli
