#pragma once

#include "cli/console/exit_status.h"
#include "cli/console/options.h"

namespace rastrel::cli {

/// `rastrel folder list`: the hot folders, their devices, and the reason why one does not work.
[[nodiscard]] ExitStatus ListFoldersCommand(const Invocation& invocation);
/// `rastrel folder add DIR` and `rastrel folder remove DIR` change the list alone: nothing is made
/// or removed in the folder. A server that runs goes by it at once.
[[nodiscard]] ExitStatus AddFolderCommand(const Invocation& invocation);
[[nodiscard]] ExitStatus RemoveFolderCommand(const Invocation& invocation);

}  // namespace rastrel::cli
