#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel import`: lays a template out as a document, and draws or saves it.
[[nodiscard]] ExitStatus ImportCommand(const Invocation& invocation);

}  // namespace rastrel::cli
