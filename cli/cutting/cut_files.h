#pragma once

#include <memory>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

class JobDirectory;

/// Runs `rastrel cut` on several files, each in a process of its own. Their lines come in the order
/// of the operands, and a file that fails does not keep the others back. Throws CommandError before
/// any run if an option is for one file alone, or two files would have one result. Returns the
/// status of the first file that failed.
[[nodiscard]] ExitStatus CutFileByFile(const Invocation& invocation);

/// The one file of a cut, and the name of its result.
struct CutFile {
  Invocation
      invocation;  ///< with the name in --output's place, and a copy in that of standard input
  std::shared_ptr<JobDirectory> copy{};  ///< holds that copy
  /// The name is made of a directory or a pattern, so that the user did not name a file that has
  /// it.
  bool hasMadeName = false;
};

/// Throws CommandError if standard input can't be read.
[[nodiscard]] CutFile TakeCutFile(const Invocation& invocation);

}  // namespace rastrel::cli
