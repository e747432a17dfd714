#pragma once

#include <cstdint>
#include <string>

namespace rastrel::os {

/// A moment of the local calendar.
struct LocalTime {
  int year = 0;   ///< four digits
  int month = 0;  ///< 1 to 12
  int day = 0;    ///< 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// The current local time. All zero if the system has none.
[[nodiscard]] LocalTime CurrentLocalTime();

/// Nanoseconds of a clock that only goes forward.
[[nodiscard]] std::int64_t MonotonicNanoseconds();

}  // namespace rastrel::os
