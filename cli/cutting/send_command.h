#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel send`: brings a cut file, or a cut job in the device's form, to a device; lists, shows
/// and checks device files.
[[nodiscard]] ExitStatus SendCommand(const Invocation& invocation);

}  // namespace rastrel::cli
