#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Runs `rastrel convert` or `rastrel cut` on several files, each in a process of its own, since
/// the library's host belongs to a process. Their lines come in the order of the operands, and a
/// file that fails does not keep the others back. Throws CommandError before any run if the options
/// are wrong, or two files would have one result. Returns the status of the first file that failed.
[[nodiscard]] ExitStatus ConvertFileByFile(const Invocation& invocation);

}  // namespace rastrel::cli
