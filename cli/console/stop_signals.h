#pragma once

#include <functional>
#include <memory>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/signals.h"

namespace rastrel::cli {

/// Begins to take the signals that ask the program to end (see os::StopSignals::Start). Fails with
/// a message for the user if the system lacks the means. REQUIRES: no other thread runs yet.
[[nodiscard]] Expected<std::unique_ptr<os::StopSignals>> TakeStopSignals(
    std::function<void(int)> onSignal);

}  // namespace rastrel::cli
