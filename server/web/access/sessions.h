#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/web/http/request.h"

namespace rastrel::server::web {

/// Sessions of browsers, in memory: they end with the program. Any thread.
class Sessions {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t MaximumSessions = 1000;
  static constexpr std::chrono::hours IdleLimit{12};
  static constexpr std::chrono::hours WholeLimit{168};
  static constexpr std::chrono::seconds CodeLimit{60};
  static constexpr std::size_t MaximumCodes = 16;

  /// Begins one; the one that was used longest ago ends if there are too many. Returns its secret,
  /// the value of the cookie. A session of a door with TLS does not count at one without.
  [[nodiscard]] Expected<std::string> Begin(const std::string& name, Role role, bool isSecure,
                                            Clock::time_point now = Clock::now());
  /// The caller of a secret, whose time begins again.
  [[nodiscard]] std::optional<Caller> Find(const std::string& secret, bool isSecure,
                                           Clock::time_point now = Clock::now());
  /// Whether a secret counts still; its time goes on.
  [[nodiscard]] bool IsAlive(const std::string& secret, bool isSecure,
                             Clock::time_point now = Clock::now());
  void End(const std::string& secret);
  /// All of a user: the role or the password is another now.
  void EndOf(const std::string& name);

  /// A code that begins one session, once, within a minute: a browser is started with it, and other
  /// users of the machine see programs' arguments.
  [[nodiscard]] Expected<std::string> NewCode(Clock::time_point now = Clock::now());
  /// Whether it is one; it is none any more then.
  [[nodiscard]] bool TakeCode(const std::string& code, Clock::time_point now = Clock::now());

 private:
  struct Session {
    Caller caller;
    bool isSecure = false;
    Clock::time_point began;
    Clock::time_point used;
  };

  using Place = std::map<std::string, Session>::iterator;
  [[nodiscard]] Place PlaceOf(const std::string& secret, bool isSecure, Clock::time_point now);

  std::mutex m_Mutex;
  std::map<std::string, Session> m_Sessions;
  std::map<std::string, Clock::time_point> m_Codes;
};

}  // namespace rastrel::server::web
