#pragma once

#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Whether the descriptor is a terminal that understands control sequences (not "dumb").
[[nodiscard]] bool IsTerminal(HANDLE handle);

/// Characters in a row of the terminal, or 0 if it can't be told.
[[nodiscard]] unsigned TerminalColumns(HANDLE handle);

}  // namespace rastrel::os
