#pragma once

#include <functional>
#include <string>

#include "cli/batch/batch_record.h"
#include "cli/batch/piece_runner.h"
#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// A batch that is to be done.
struct BatchTask {
  std::string directory;  ///< of the results, full, with a slash at its end; it is made
  BatchPlan plan;
  const char* noun = "files";  ///< the summary's name for the plan's files
  /// Called when each file has a result, before the summary and while the record is there; the
  /// status counts if no file has another one than Done. May be empty.
  std::function<ExitStatus()> finish;
};

/// Does all files that have no result in the record, and writes the lines of all and a summary.
/// Returns the status of the command. Throws CommandError. REQUIRES: no other thread runs yet.
[[nodiscard]] ExitStatus RunBatch(const Invocation& invocation, PieceRunner& runner,
                                  BatchTask task);

}  // namespace rastrel::cli
