#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// Makes a private directory (0700) that names this process as its owner (WriteOwner), as one step:
/// at no moment is there one of that name without its owner. EEXIST if anything has the name. Until
/// it has its name it has that of a temporary file (OwnTemporaryName) beside it. By native path.
[[nodiscard]] Expected<void> MakeOwnedDirectory(const std::string& path);

}  // namespace rastrel::os
