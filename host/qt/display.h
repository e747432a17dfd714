#pragma once

#include "rastrel/platform/os/expected.h"

namespace rastrel::qt {

/// Succeeds if a window can be shown; else the failure's `why` is a sentence for the user. The
/// toolkit ends the process where it finds no display, so it is used only if this finds one.
[[nodiscard]] Expected<void> CheckDisplay();

}  // namespace rastrel::qt
