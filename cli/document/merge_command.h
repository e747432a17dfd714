#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel merge`: imports a template with the values of a table, a plate for each row, draws or
/// saves the document and reports on each row. Throws CommandError.
[[nodiscard]] ExitStatus MergeCommand(const Invocation& invocation);

}  // namespace rastrel::cli
