#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/batch/batch_record.h"
#include "cli/batch/piece_cutter.h"
#include "rastrel/platform/os/expected.h"

/// The pieces of an array of a cluster, in a file of the batch's record: a task knows the array's
/// name and its own number, and finds its piece here. So no name of a file goes through a script.
namespace rastrel::cli {

struct ArrayPlan {
  std::string name;       ///< of the array in the cluster: letters, digits and dashes
  std::string directory;  ///< native; relative paths of the batch are from there
  std::vector<BatchPiece> pieces;
};

/// On the disk after success.
[[nodiscard]] Expected<void> WriteArrayPlan(const BatchRecord& record, const ArrayPlan& plan);
/// Fails if it is missing or damaged, or has pieces that the batch has not.
[[nodiscard]] Expected<ArrayPlan> ReadArrayPlan(const BatchRecord& record, const std::string& name);
/// Names of all that are in the record.
[[nodiscard]] Expected<std::vector<std::string>> ArrayNames(const BatchRecord& record);
[[nodiscard]] Expected<void> RemoveArrayPlan(const BatchRecord& record, const std::string& name);

}  // namespace rastrel::cli
