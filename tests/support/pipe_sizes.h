#pragma once

#include <vector>

#include "rastrel/platform/os/system_calls.h"

namespace rastrel::test {

/// The sizes that pipes were asked for since RecordPipeSizes, in the order of the calls.
inline std::vector<int>& PipeSizes() {
  static std::vector<int> sizes;
  return sizes;
}

/// Records the size of each pipe that is made from here on. Called once within a SystemCallsGuard;
/// pipes must be made by one thread at a time.
inline void RecordPipeSizes() {
  static os::SystemCalls machine;
  machine = os::Calls();
  PipeSizes().clear();
  os::Calls().set_pipe_size = [](int descriptor, int bytes) {
    PipeSizes().push_back(bytes);
    return machine.set_pipe_size(descriptor, bytes);
  };
}

}  // namespace rastrel::test
