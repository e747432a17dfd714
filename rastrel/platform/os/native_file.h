#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"

/// The few operations on paths of this machine that a library path can't spell: names with a
/// backslash or with bytes that are no UTF-8.
namespace rastrel::os {

/// As CopyFileOver (see file.h), by native paths, which are not changed.
[[nodiscard]] Expected<void> CopyNativeFile(const std::string& source, const std::string& target,
                                            Access access = Access::ByUmask);

/// Whether this process may execute the file, and it is a regular one.
[[nodiscard]] bool IsProgram(const std::string& path);

/// Sets a variable of this process's environment, which children started from now on get, or
/// removes it if `value` is null. REQUIRES: no other thread reads the
/// environment meanwhile.
[[nodiscard]] Expected<void> SetEnvironmentValue(const char* name, const char* value);

}  // namespace rastrel::os
