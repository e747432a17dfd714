#pragma once

#include "rastrel/platform/os/handle.h"

namespace rastrel::os {

/// Whether nobody can read any more from the pipe, socket or terminal that the handle writes to:
/// all reading ends are closed, or the line was hung up. Takes and writes nothing, and never waits.
/// False for a file, a device, and a handle that can't be asked.
[[nodiscard]] bool ReaderIsGone(HANDLE writeEnd);

}  // namespace rastrel::os
