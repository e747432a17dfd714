#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Writes that the command was cancelled, as a JSON line or to standard error; returns its status.
[[nodiscard]] ExitStatus WriteCancelled(bool json);

}  // namespace rastrel::cli
