#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

/// Looks into a stopped process of another program.
namespace faults {

/// The zero-terminated text at an address, at most 4096 bytes; empty if there is none.
[[nodiscard]] std::string TextAt(pid_t task, std::uint64_t address);
/// The path of a descriptor as the system shows it, for instance "pipe:[7]"; empty if it is closed.
[[nodiscard]] std::string PathOfDescriptor(pid_t task, int descriptor);
/// A path argument as an absolute one. `directory` is a descriptor or AT_FDCWD. Links in the
/// directories above the last name are followed.
[[nodiscard]] std::string AbsolutePath(pid_t task, int directory, const std::string& path);
/// The program file that the process runs.
[[nodiscard]] std::string ProgramOf(pid_t task);
/// Where the program's own code begins, after the dynamic loader.
[[nodiscard]] std::optional<std::uint64_t> EntryPointOf(pid_t task);
/// The process that a thread belongs to; 0 if it is gone.
[[nodiscard]] pid_t ProcessOf(pid_t task);

}  // namespace faults
