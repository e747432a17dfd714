#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <thread>

namespace rastrel::test {

/// How many threads this process has. A sanitizer starts one of its own with the first that the
/// program starts, so one is started before the first count.
inline std::size_t Threads() {
  static const bool begun = (std::thread([] {}).join(), true);
  static_cast<void>(begun);
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

/// The same once it has come down to `expected`: a thread that was joined is listed a moment
/// longer.
inline std::size_t ThreadsSettled(std::size_t expected) {
  for (int rounds = 0; Threads() > expected && rounds < 5000; ++rounds)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return Threads();
}

}  // namespace rastrel::test
