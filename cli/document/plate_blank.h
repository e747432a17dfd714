#pragma once

#include "cli/console/options.h"
#include "cli/document/merge_run.h"

namespace rastrel::cli {

/// The task's invocation, with the size of a blank that `--blank plate` asks for: that of all
/// plates of the first row as they lie beside each other. Without that value, and for a format that
/// has its own blank, nothing is set. Throws CommandError as RunMerge does.
[[nodiscard]] Invocation WithPlateBlank(const MergeTask& task);

}  // namespace rastrel::cli
