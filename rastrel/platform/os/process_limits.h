#pragma once

#include <cstdint>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// Limits of a process; 0: as before.
struct ProcessLimits {
  std::uint64_t memoryBytes = 0;       ///< of its address space; beyond it there is no memory
  std::uint64_t processorSeconds = 0;  ///< of processor time; beyond it a signal ends it
  std::uint64_t fileBytes = 0;         ///< of a file that it writes; ...
};

/// Sets the limits of a process of this user, and of those that it starts from now on. A process
/// that means to may set its own up to the machine's: they are for work that goes wrong, and walls
/// (interpreter/wall.h) are for programs that do. Fails if there is no such process, or it is
/// another user's. Any thread.
[[nodiscard]] Expected<void> LimitProcess(std::uint32_t id, const ProcessLimits& limits);

}  // namespace rastrel::os
