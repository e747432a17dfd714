#pragma once

#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// Inspects each file: one line a file, or the table or objects of docs/formats/inspect.md. A file
/// that can't be read is reported on standard error, and the others follow. BadInput if
/// there was one, else the status of the first other failure, else Done.
[[nodiscard]] ExitStatus InspectCommand(const Invocation& invocation);

/// The files that an operand means, in order of their names: those in a folder and below it, those
/// that match a pattern with * and ? in its last component, or the one file that it names.
[[nodiscard]] std::vector<std::string> FilesOfOperand(const std::string& operand);

/// Whether a name matches a pattern: * is any text, ? any byte.
[[nodiscard]] bool MatchesPattern(std::string_view name, std::string_view pattern);

}  // namespace rastrel::cli
