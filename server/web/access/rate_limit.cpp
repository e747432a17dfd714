#include "server/web/access/rate_limit.h"

#include <algorithm>

namespace rastrel::server::web {

// `empty` lies as many intervals ahead as were taken of late.
RateLimit::Duration RateLimit::WaitUntil(Clock::time_point empty, Clock::time_point now) const {
  const auto latest = now + m_Interval * (m_AtOnce - 1);
  if (empty <= latest) return Duration(0);
  return std::max(Duration(1), std::chrono::ceil<Duration>(empty - latest));
}

RateLimit::Duration RateLimit::Take(const std::string& key, Clock::time_point now) {
  const std::lock_guard lock(m_Mutex);
  const auto found = m_Places.find(key);
  if (found == m_Places.end()) {
    if (m_Entries.size() >= KeyLimit) {
      m_Places.erase(m_Entries.back().key);
      m_Entries.pop_back();
    }
    m_Entries.push_front({key, now});
    m_Places[key] = m_Entries.begin();
  } else {
    m_Entries.splice(m_Entries.begin(), m_Entries, found->second);
  }
  Entry& entry = m_Entries.front();
  const Duration wait = WaitUntil(entry.empty, now);
  if (wait == Duration(0)) entry.empty = std::max(entry.empty, now) + m_Interval;
  return wait;
}

RateLimit::Duration RateLimit::WaitOf(const std::string& key, Clock::time_point now) {
  const std::lock_guard lock(m_Mutex);
  const auto found = m_Places.find(key);
  return found == m_Places.end() ? Duration(0) : WaitUntil(found->second->empty, now);
}

std::string RetryAfter(RateLimit::Duration wait) {
  return std::to_string(
      std::max<std::int64_t>(1, std::chrono::ceil<std::chrono::seconds>(wait).count()));
}

}  // namespace rastrel::server::web
