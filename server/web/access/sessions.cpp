#include "server/web/access/sessions.h"

#include <algorithm>
#include <utility>

#include "server/web/access/web_token.h"

namespace rastrel::server::web {

Expected<std::string> Sessions::Begin(const std::string& name, Role role, bool isSecure,
                                      Clock::time_point now) {
  auto secret = NewSecret();
  if (!secret) return secret;
  const auto formToken = NewSecret();
  if (!formToken) return formToken;
  const std::lock_guard lock(m_Mutex);
  if (m_Sessions.size() >= MaximumSessions)
    m_Sessions.erase(
        std::ranges::min_element(m_Sessions, {}, [](const auto& one) { return one.second.used; }));
  m_Sessions[*secret] = {{name, role, true, *formToken}, isSecure, now, now};
  return secret;
}

Sessions::Place Sessions::PlaceOf(const std::string& secret, bool isSecure, Clock::time_point now) {
  const auto found = m_Sessions.find(secret);
  if (found == m_Sessions.end() || found->second.isSecure != isSecure) return m_Sessions.end();
  if (now - found->second.used <= IdleLimit && now - found->second.began <= WholeLimit)
    return found;
  m_Sessions.erase(found);
  return m_Sessions.end();
}

std::optional<Caller> Sessions::Find(const std::string& secret, bool isSecure,
                                     Clock::time_point now) {
  const std::lock_guard lock(m_Mutex);
  const auto found = PlaceOf(secret, isSecure, now);
  if (found == m_Sessions.end()) return std::nullopt;
  found->second.used = now;
  return found->second.caller;
}

bool Sessions::IsAlive(const std::string& secret, bool isSecure, Clock::time_point now) {
  const std::lock_guard lock(m_Mutex);
  return PlaceOf(secret, isSecure, now) != m_Sessions.end();
}

void Sessions::End(const std::string& secret) {
  const std::lock_guard lock(m_Mutex);
  m_Sessions.erase(secret);
}

void Sessions::EndOf(const std::string& name) {
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Sessions, [&](const auto& one) { return one.second.caller.name == name; });
}

Expected<std::string> Sessions::NewCode(Clock::time_point now) {
  auto code = NewSecret();
  if (!code) return code;
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Codes, [&](const auto& one) { return now - one.second > CodeLimit; });
  if (m_Codes.size() >= MaximumCodes) return FailureOf("too many codes wait for their browsers");
  m_Codes[*code] = now;
  return code;
}

bool Sessions::TakeCode(const std::string& code, Clock::time_point now) {
  const std::lock_guard lock(m_Mutex);
  const auto found = m_Codes.find(code);
  if (found == m_Codes.end()) return false;
  const bool isFresh = now - found->second <= CodeLimit;
  m_Codes.erase(found);
  return isFresh;
}

}  // namespace rastrel::server::web
