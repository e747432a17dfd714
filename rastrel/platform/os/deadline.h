#pragma once

#include <chrono>
#include <optional>

namespace rastrel::os {

/// The moment at which a wait ends, on a clock that only goes forward. A wait that a signal
/// interrupts goes on with the rest of its time: a host may have a timer that interrupts every few
/// milliseconds, and a wait that began again with its whole time would never end. Every wait with a
/// limit takes one of these and no duration. A value; copies are the same moment.
class Deadline {
 public:
  /// A moment that never comes.
  [[nodiscard]] static Deadline Never() { return {}; }
  /// That long from now. Less than 0 is now.
  [[nodiscard]] static Deadline After(std::chrono::nanoseconds time);

  /// Whether the moment has come.
  [[nodiscard]] bool HasPassed() const;
  /// The rest of the time for poll(): milliseconds rounded up, so that a wait does not turn round
  /// in the last of them; 0 once the moment has come; -1 for Never. A rest that is too long for an
  /// int is the longest there is: wait again if HasPassed is false then.
  [[nodiscard]] int PollTimeout() const;

 private:
  std::optional<std::chrono::steady_clock::time_point> m_Moment;
};

}  // namespace rastrel::os
