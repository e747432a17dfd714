#include "rastrel/platform/os/clock.h"

#include <ctime>

namespace rastrel::os {

LocalTime CurrentLocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  if (now == static_cast<std::time_t>(-1) || localtime_r(&now, &parts) == nullptr) return {};
  return {.year = parts.tm_year + 1900,
          .month = parts.tm_mon + 1,
          .day = parts.tm_mday,
          .hour = parts.tm_hour,
          .minute = parts.tm_min,
          .second = parts.tm_sec};
}

std::int64_t MonotonicNanoseconds() {
  std::timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

}  // namespace rastrel::os
