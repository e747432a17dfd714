#pragma once

#include <chrono>
#include <thread>

namespace rastrel::test {

/// How long a test waits for something that is sure to come: far longer than it takes on a loaded
/// machine, and shorter than the limit of a whole test, so that the test itself says which wait
/// failed.
inline constexpr std::chrono::seconds WaitLimit{240};

/// Waits until the condition holds, and returns whether it came to that within WaitLimit.
template <typename Condition>
[[nodiscard]] bool WaitUntil(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + WaitLimit;
  for (; !condition(); std::this_thread::sleep_for(std::chrono::milliseconds(1)))
    if (std::chrono::steady_clock::now() > end) return false;
  return true;
}

}  // namespace rastrel::test
