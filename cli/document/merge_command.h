#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"
#include "cli/document/merge_part.h"

namespace rastrel::cli {

/// `rastrel merge`: imports a template with the values of a table, a plate for each row, draws or
/// saves the document and reports on each row; or the part of this that a batch asks for. Throws
/// CommandError.
[[nodiscard]] ExitStatus MergeCommand(const Invocation& invocation, const MergePart& part = {});

}  // namespace rastrel::cli
