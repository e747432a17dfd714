#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

namespace rastrel::server::web {

/// How often something may happen for each key, an address say: so many at once, and one more after
/// each interval. Remembers a bounded number of keys; those that were seen longest ago go first.
/// Any thread.
class RateLimit {
 public:
  using Clock = std::chrono::steady_clock;
  using Duration = std::chrono::milliseconds;
  static constexpr std::size_t KeyLimit = 10000;

  RateLimit(int atOnce, Duration interval) : m_AtOnce(atOnce), m_Interval(interval) {}

  /// Counts one. Returns zero if it may happen, else how long to wait until it may; then it counts
  /// for nothing.
  [[nodiscard]] Duration Take(const std::string& key, Clock::time_point now = Clock::now());
  /// The same without counting.
  [[nodiscard]] Duration WaitOf(const std::string& key, Clock::time_point now = Clock::now());

 private:
  struct Entry {
    std::string key;
    Clock::time_point empty;  ///< when all that was taken is there again
  };

  [[nodiscard]] Duration WaitUntil(Clock::time_point empty, Clock::time_point now) const;

  const int m_AtOnce;
  const Duration m_Interval;
  std::mutex m_Mutex;
  std::list<Entry> m_Entries;  // the one seen last first
  std::unordered_map<std::string, std::list<Entry>::iterator> m_Places;
};

/// The value of Retry-After: whole seconds, at least one.
[[nodiscard]] std::string RetryAfter(RateLimit::Duration wait);

}  // namespace rastrel::server::web
