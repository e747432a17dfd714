#include "rastrel/platform/os/deadline.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace rastrel::os {

using Clock = std::chrono::steady_clock;

Deadline Deadline::After(std::chrono::nanoseconds time) {
  Deadline deadline;
  const Clock::time_point now = Clock::now();
  const Clock::duration room = Clock::time_point::max() - now;
  deadline.m_Moment = now + std::clamp<Clock::duration>(time, Clock::duration::zero(), room);
  return deadline;
}

bool Deadline::HasPassed() const { return m_Moment && Clock::now() >= *m_Moment; }

int Deadline::PollTimeout() const {
  if (!m_Moment) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_Moment - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX));
}

}  // namespace rastrel::os
