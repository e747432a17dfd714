#pragma once

#include "cli/batch/batch_record.h"
#include "cli/batch/gathered_results.h"
#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Does all files of a batch that have no result on this machine, in so many programs at a time,
/// with pieces of about so many seconds. Returns Cancelled if a signal asked for an end, and else
/// Done: then each file has a result. Throws CommandError if no program can be started.
[[nodiscard]] ExitStatus RunLocalPieces(const BatchRecord& record, GatheredResults& results,
                                        unsigned atOnce, double seconds);

}  // namespace rastrel::cli
