#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel sheet FILE|FOLDER`: makes a text of a spreadsheet, as the library's import does or as a
/// person sees the cells, or lists its sheets. Throws CommandError.
[[nodiscard]] ExitStatus SheetCommand(const Invocation& invocation);

}  // namespace rastrel::cli
