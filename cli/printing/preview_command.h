#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel preview FILE... -o out.tif`: makes a picture of each page, or of each color plane,
/// through the host's preview ticket. Several files are previewed at the same time. Throws
/// CommandError.
[[nodiscard]] ExitStatus PreviewCommand(const Invocation& invocation);

}  // namespace rastrel::cli
