#pragma once

#include <string>

#include "cli/console/exit_status.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

struct Invocation;
struct SpoolEntry;

/// Finishes a job whose print was cut off while its pages came to the spool, from the note of which
/// pages there were. Nothing is changed if that can't be done. A job that is whole is a success.
[[nodiscard]] Expected<void> RepairEntry(const SpoolEntry& entry);

/// Removes a job with all its pages, those too that have not come to the spool yet. Of a job that
/// is a link, the link alone. The failure names the directory that could not be removed whole.
[[nodiscard]] Expected<void> RemoveEntry(const SpoolEntry& entry);

/// `rastrel spool repair`
[[nodiscard]] ExitStatus RepairSpoolCommand(const Invocation& invocation);

}  // namespace rastrel::cli
