#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// Completes a library path that ends in six letters X (as `_wmktemp` does): they become lower-case
/// letters and digits, so that lowering the name's case changes nothing, chosen at random until
/// nothing of that name exists. Nothing is created. `Failure` if the path ends otherwise (EINVAL),
/// if the system has no random bytes to give, or if 100 attempts find no free
/// name (EEXIST).
[[nodiscard]] Expected<std::wstring> CompleteTemporaryName(std::wstring pattern);

}  // namespace rastrel::os
