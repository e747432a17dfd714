#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel convert`: makes a bitmap object of a PostScript, EPS or PDF file in a document of its
/// own, with the paths of one color as cut lines, and writes that as a file. The input is only
/// read.
[[nodiscard]] ExitStatus ConvertCommand(const Invocation& invocation);

}  // namespace rastrel::cli
