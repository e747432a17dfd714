#pragma once

#include <string>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// The printer of that name is no device: a job for it becomes a PostScript file in the separation
/// directory, which `rastrel separate` and the library's GenerateSCObjects separate. A section of
/// the devices file with the name counts for more.
inline constexpr const char* SeparationPrinter = "Separation";

/// Whether `rastrel print` is to print to it.
[[nodiscard]] bool PrintsToSeparation(const Invocation& invocation);

/// Takes the job as it is, and keeps its path in the setting "Output File" of section "Separation".
[[nodiscard]] ExitStatus PrintToSeparation(const Invocation& invocation);

}  // namespace rastrel::cli
