#pragma once

#include <functional>
#include <memory>

#include "rastrel/platform/os/signals.h"

namespace rastrel::cli {

/// os::StopSignals::Start for a command, which can't do without. Throws CommandError(JobFailed) if
/// the system lacks the means.
[[nodiscard]] std::unique_ptr<os::StopSignals> TakeStopSignals(std::function<void(int)> onSignal);

}  // namespace rastrel::cli
