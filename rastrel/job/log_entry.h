#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/os/clock.h"

namespace rastrel::job {

/// The head of a log entry: "[04/02/2026, 09:08:07][ 512]". The thread's id is right-aligned in a
/// width of 4 and never cut. Independent of the locale. A moment that could not be had (all zero)
/// leaves the first group out.
[[nodiscard]] std::string LogEntryHead(const os::LocalTime& time, std::uint32_t thread);

}  // namespace rastrel::job
