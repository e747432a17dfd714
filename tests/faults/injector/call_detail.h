#pragma once

#include <sys/types.h>
#include <sys/user.h>

#include <string>
#include <string_view>

namespace faults {

/// A call's subject, for the reader of a report: its path, the path of its descriptor, or
/// nothing. Without tabs and line ends.
[[nodiscard]] std::string DetailOf(pid_t task, std::string_view name,
                                   const user_regs_struct& registers);

}  // namespace faults
