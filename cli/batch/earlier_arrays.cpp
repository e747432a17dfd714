#include "cli/batch/earlier_arrays.h"

#include <string>
#include <vector>

#include "cli/batch/array_plan.h"
#include "cli/batch/slurm_cluster.h"
#include "cli/console/exit_status.h"

namespace rastrel::cli {

void EndEarlierArrays(const BatchRecord& record) {
  const auto names = OrEnd(ExitStatus::JobFailed, ArrayNames(record));
  if (names.empty()) return;
  const auto cluster = SlurmCluster::Find({}, [] { return false; });
  if (!cluster)
    throw CommandError(ExitStatus::NotInstalled,
                       "an array of Slurm may still work on this batch, and here is no program to "
                       "cancel it: do `scancel --name=" +
                           names.front() + "` on a machine of the cluster, remove '" +
                           record.Directory() + "/array-" + names.front() +
                           ".json', and give the same command again");
  for (const std::string& name : names) {
    OrEnd(ExitStatus::JobFailed, cluster->Cancel(name));
    OrEnd(ExitStatus::JobFailed, RemoveArrayPlan(record, name));
  }
}

}  // namespace rastrel::cli
