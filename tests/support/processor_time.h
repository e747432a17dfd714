#pragma once

#include <ctime>

namespace rastrel::test {

/// Seconds of processor time that this process has used, all its threads together. A cost measured
/// by it does not grow with the machine's other work.
[[nodiscard]] inline double ProcessorSeconds() {
  timespec used{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

}  // namespace rastrel::test
