#pragma once

#include <cstddef>
#include <string>

namespace rastrel::os {

/// `bytes` random bytes of the system as lower-case hexadecimal digits, two each. Empty, with errno
/// set, if the system has none to give.
[[nodiscard]] std::string RandomDigits(std::size_t bytes);

}  // namespace rastrel::os
