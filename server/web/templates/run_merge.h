#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// A run of `rastrel merge` that has ended by itself.
struct MergeRun {
  int status = 0;      ///< the command's exit status; 128 and the signal that ended it
  std::string output;  ///< both streams together, at most some megabytes
};

/// Runs `rastrel merge` with these arguments, the first "merge", as a process of its own. Fails if
/// it can't be started, and if it has not ended in time: it is ended then, with all of its own
/// children.
using RunMerge = std::function<Expected<MergeRun>(const std::vector<std::string>& arguments,
                                                  std::chrono::milliseconds limit)>;

}  // namespace rastrel::server::web
