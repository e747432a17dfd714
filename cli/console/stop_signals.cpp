#include "cli/console/stop_signals.h"

#include <utility>

#include "cli/console/exit_status.h"

namespace rastrel::cli {

std::unique_ptr<os::StopSignals> TakeStopSignals(std::function<void(int)> onSignal) {
  auto signals = os::StopSignals::Start(std::move(onSignal));
  if (!signals)
    throw CommandError(ExitStatus::JobFailed, "the system gives no thread or descriptor: " +
                                                  DescribeError(signals.Error().error));
  return std::move(*signals);
}

}  // namespace rastrel::cli
