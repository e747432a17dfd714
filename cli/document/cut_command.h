#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel cut`: places a PostScript, EPS or PDF file in a document of its own, takes the paths of
/// one or two colors out of it as lines for a knife, and writes them as a file. The input is only
/// read.
[[nodiscard]] ExitStatus CutCommand(const Invocation& invocation);

}  // namespace rastrel::cli
