#include "cli/console/stop_signals.h"

#include <utility>

namespace rastrel::cli {

Expected<std::unique_ptr<os::StopSignals>> TakeStopSignals(std::function<void(int)> onSignal) {
  auto signals = os::StopSignals::Start(std::move(onSignal));
  if (signals) return signals;
  return FailureOf("the system gives no thread or descriptor: " +
                   DescribeError(signals.Error().error));
}

}  // namespace rastrel::cli
