#pragma once

#include "cli/console/exit_status.h"

namespace rastrel::cli {

struct Invocation;

/// `rastrel prefix FILE`: writes the prefix that a print, or with --preview a preview, of the file
/// would have, to a file as it is or to standard output for a look. Throws CommandError.
[[nodiscard]] ExitStatus PrefixCommand(const Invocation& invocation);

}  // namespace rastrel::cli
