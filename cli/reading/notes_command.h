#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Shows the companies of a job notes file as text, or as the objects of docs/formats/job-notes.md.
/// Throws CommandError(BadInput) with the reason if the file is refused.
[[nodiscard]] ExitStatus NotesCommand(const Invocation& invocation);

}  // namespace rastrel::cli
