#pragma once

#include "cli/batch/batch_record.h"
#include "cli/batch/gathered_results.h"
#include "cli/console/exit_status.h"

namespace rastrel::cli {

/// Who does the pieces of a batch: this machine (LocalPieces), or the machines of a cluster
/// (SlurmPieces). Both do the same runs, and so come to the same files, lines and status.
class PieceRunner {
 public:
  PieceRunner() = default;
  virtual ~PieceRunner() = default;
  PieceRunner(const PieceRunner&) = delete;
  PieceRunner& operator=(const PieceRunner&) = delete;

  /// Does all files that have no result, and adds theirs. Returns Cancelled if a signal asked for
  /// an end, and else Done: then each file has a result. Throws CommandError if the work can't be
  /// done; nothing of it is under way any more then. Once. REQUIRES: no other thread runs yet.
  [[nodiscard]] virtual ExitStatus Run(const BatchRecord& record, GatheredResults& results) = 0;
};

}  // namespace rastrel::cli
