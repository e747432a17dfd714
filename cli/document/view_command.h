#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel view`: shows a template or a document, on the terminal where it can
/// show pictures, else in the desktop's viewer, else as a file whose name is printed.
[[nodiscard]] ExitStatus ViewCommand(const Invocation& invocation);

}  // namespace rastrel::cli
