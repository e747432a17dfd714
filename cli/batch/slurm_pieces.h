#pragma once

#include <atomic>
#include <memory>

#include "cli/batch/piece_runner.h"
#include "cli/batch/slurm_cluster.h"

namespace rastrel::cli {

/// Does a batch on the machines of a Slurm cluster, as arrays of tasks. Each task stores its own
/// results in the record, on a folder that all machines share, and they are taken from there; the
/// controller is only asked which tasks are over. docs/batches.md.
class SlurmPieces : public PieceRunner {
 public:
  /// A piece takes about `seconds`. Throws CommandError if the programs of Slurm are
  /// missing.
  SlurmPieces(SlurmWishes wishes, double seconds);

  [[nodiscard]] ExitStatus Run(const BatchRecord& record, GatheredResults& results) override;

 private:
  // Shared with the cluster's calls, which ask it.
  std::shared_ptr<std::atomic<bool>> m_IsStopped;
  SlurmCluster m_Cluster;
  double m_Seconds;
};

}  // namespace rastrel::cli
