#pragma once

#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::interpreter {

struct WallPath;

/// Landlock's version on this machine, 1 or more; 0 if the kernel has none or lets this process
/// have none.
[[nodiscard]] int FileRulesVersion();

/// The kernel's rules that let a process open these paths and no others, as an open descriptor;
/// closed if the kernel has no such rules. Rights that the kernel does not know are left out.
[[nodiscard]] Expected<os::FileDescriptor> MakeFileRules(const std::vector<WallPath>& paths);

/// Puts them in force for the calling thread, for ever, and for all that it executes. A system call
/// only. Does nothing if the descriptor is not open.
void EnterFileRules(int rules) noexcept;

}  // namespace rastrel::interpreter
