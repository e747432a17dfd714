#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file.h"
#include "server/web/access/rate_limit.h"
#include "server/web/access/sessions.h"
#include "server/web/access/users_file.h"
#include "server/web/http/http_server.h"

namespace rastrel::server::web {

/// Who may come in. Three ways to say who one is:
///
///     Unix socket      the same user of this machine: manages, and needs no password
///     TCP, no TLS      this machine alone: the token of "server/web.token", or a one-time code
///     TCP with TLS     name and password of "server/users.toml", or a one-time code
///
/// A browser gets a session for either: a cookie that no script can read and no other site sends.
/// Requests that change something need the token of the session besides, and come from no other
/// origin. Any thread.
class Gate {
 public:
  struct Settings {
    std::string dataRoot;            ///< native
    std::string ownName;             ///< the user that the server runs as
    std::string token;               ///< of the door without TLS; empty: it counts for none
    std::vector<std::string> names;  ///< that the door with TLS is called by, in lower case
  };
  /// What may come at once and then, for each address; failed sign-ins for each name, too.
  struct Rates {
    int requests = 400;
    RateLimit::Duration requestInterval{5};
    int failures = 10;
    RateLimit::Duration failureInterval{30000};
  };

  Gate(Settings settings, const Rates& rates);

  /// For Hooks::admit of a door at this port. Requests by the Unix socket have no rate.
  [[nodiscard]] std::optional<Response> Admit(Request& request, const Route* route, Door::Kind door,
                                              int port);
  /// For Hooks::admitBody.
  [[nodiscard]] std::optional<Response> AdmitBody(const Request& request, const Route& route) const;

  /// Begins a session for who sends the token or a one-time code, or name and password. Returns the
  /// answer to a failure, or nothing; then `caller` and `secret`, the cookie's value, are set. It
  /// takes the time of a password's test.
  [[nodiscard]] std::optional<Response> SignInByToken(const Request& request,
                                                      const std::string& token, Caller& caller,
                                                      std::string& secret);
  [[nodiscard]] std::optional<Response> SignInByPassword(const Request& request,
                                                         const std::string& name,
                                                         const std::string& password,
                                                         Caller& caller, std::string& secret);
  /// Whether the request would be let in still: its session may have ended since, or its user may
  /// have been changed. For answers that go on for long.
  [[nodiscard]] bool IsStillIn(const std::string& cookie, bool isSecure);
  /// Ends the session that the request came by, if any.
  void SignOut(const Request& request);
  /// See Sessions.
  [[nodiscard]] Expected<std::string> NewCode() { return m_Sessions.NewCode(); }

 private:
  [[nodiscard]] std::optional<Response> CheckHost(const Request& request, Door::Kind door,
                                                  int port) const;
  [[nodiscard]] std::optional<Response> FindCaller(Request& request, Door::Kind door);
  [[nodiscard]] std::optional<Response> Begin(const Request& request, const std::string& name,
                                              Role role, Caller& caller, std::string& secret);
  [[nodiscard]] Response Failed(const Request& request, const std::string& name);
  void LookAtUsers();

  const Settings m_Settings;
  Sessions m_Sessions;
  RateLimit m_Requests;
  RateLimit m_Failures;
  std::mutex m_UsersMutex;
  os::FileStamp m_UsersStamp;
  std::int64_t m_UsersChange = 0;
  std::vector<User> m_Users;
};

/// The name of the cookie of a session.
inline constexpr const char* SessionCookie = "rastrel-session";
/// The header Set-Cookie that begins a session; with an empty secret the one that ends it.
[[nodiscard]] std::string SessionCookieOf(const std::string& secret, bool isSecure);

/// 429 with Retry-After.
[[nodiscard]] Response TooOften(RateLimit::Duration wait);

}  // namespace rastrel::server::web
