#pragma once

#include <optional>
#include <string_view>

/// The system calls that matter here: those on files, pipes, memory, processes, threads and waits.
/// Calls that can't fail, or whose failure no program can answer (futex, exit), are left out.
namespace faults {

/// The name of a call that is looked at, as "openat", or nothing for another one.
[[nodiscard]] std::optional<std::string_view> CallName(long number);

/// Makes the calling process, and all that it starts, stop for its tracer at each of these calls.
/// False if the system refuses that.
[[nodiscard]] bool StopAtCalls();

}  // namespace faults
