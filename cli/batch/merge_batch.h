#pragma once

#include "cli/batch/piece_runner.h"
#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel batch merge`: the pages of a merge, each drawn by a run of its own that merges the
/// whole table (console/merge_parts.h). Returns the status of the command. Throws CommandError.
/// REQUIRES: no other thread runs yet.
[[nodiscard]] ExitStatus MergeInBatch(const Invocation& invocation, PieceRunner& runner);

}  // namespace rastrel::cli
