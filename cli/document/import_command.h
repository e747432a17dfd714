#pragma once

#include "cli/exit_status.h"
#include "cli/options.h"

namespace rastrel::cli {

/// `rastrel import`: lays a template out as a document, and draws or saves it.
[[nodiscard]] ExitStatus ImportCommand(const Invocation& invocation);

}  // namespace rastrel::cli
