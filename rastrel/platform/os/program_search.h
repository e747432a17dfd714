#pragma once

#include <string>
#include <string_view>

namespace rastrel::os {

/// Native path of the first program of that name in the directories of $PATH, or empty. A directory
/// that is not written as a full path is passed over: its meaning depends on this process's current
/// directory.
[[nodiscard]] std::string FindProgram(std::string_view name);

/// The same for a regular file that need not be a program.
[[nodiscard]] std::string FindFileOnPath(std::string_view name);

}  // namespace rastrel::os
