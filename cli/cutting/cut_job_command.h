#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel cut` with rules, or with a cut job as its file: runs the pipeline and reports.
[[nodiscard]] ExitStatus CutJobCommand(const Invocation& invocation);

}  // namespace rastrel::cli
