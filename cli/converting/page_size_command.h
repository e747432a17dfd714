#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel pagesize`: measures the first page of each file through the queue program, several
/// files at a time, and writes one line a file, in the order of the files. With --dsc the bounds of
/// the comments come first, and the measured ones besides where they differ by more than a point on
/// any side. A file that can't be measured is reported on standard error, and the others are
/// measured all the same.
[[nodiscard]] ExitStatus PageSizeCommand(const Invocation& invocation);

}  // namespace rastrel::cli
