#pragma once

#include <cstddef>
#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// `bytes` random bytes of the system as lower-case hexadecimal digits, two each. `Failure` if
/// the system has none to give.
[[nodiscard]] Expected<std::string> RandomDigits(std::size_t bytes);

}  // namespace rastrel::os
