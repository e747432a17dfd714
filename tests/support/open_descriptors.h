#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace rastrel::test {

/// How many descriptors this process holds open. Two counts show a leak.
inline std::size_t OpenDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

}  // namespace rastrel::test
