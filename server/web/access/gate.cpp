#include "server/web/access/gate.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/path.h"
#include "server/web/access/password.h"
#include "server/web/http/address_text.h"
#include "server/web/http/listening_socket.h"

namespace rastrel::server::web {
namespace {

bool IsChanging(const Request& request) { return request.method != Method::Get; }

// A browser says from where a request comes; what is none says nothing.
bool IsFromElsewhere(const Request& request) {
  const std::string& site = request.Header("sec-fetch-site");
  if (!site.empty() && site != "same-origin" && site != "none") return true;
  const std::string& origin = request.Header("origin");
  if (origin.empty()) return false;
  const std::string own = (request.isSecure ? "https://" : "http://") + request.Header("host");
  return LowerCase(origin) != LowerCase(own);
}

// The failure of a user that isn't there is to take as long as that of one that is.
const std::string& HashOfNobody() {
  static const std::string hash = HashOfPassword("nobody has this").ValueOr("");
  return hash;
}

}  // namespace

Gate::Gate(Settings settings, const Rates& rates)
    : m_Settings(std::move(settings)),
      m_Requests(rates.requests, rates.requestInterval),
      m_Failures(rates.failures, rates.failureInterval) {}

Response TooOften(RateLimit::Duration wait) {
  Response response = ErrorResponse(429, "too-often", "wait a little before you try again");
  response.Add("Retry-After", RetryAfter(wait));
  return response;
}

std::string SessionCookieOf(const std::string& secret, bool isSecure) {
  return std::string(SessionCookie) + "=" + secret + "; Path=/; HttpOnly; SameSite=Strict" +
         (isSecure ? "; Secure" : "") + (secret.empty() ? "; Max-Age=0" : "");
}

std::optional<Response> Gate::CheckHost(const Request& request, Door::Kind door, int port) const {
  if (door == Door::Kind::Local) return std::nullopt;
  const auto host = HostNameOf(request.Header("host"));
  if (!host) return ErrorResponse(400, "bad-request", "the request names no host");
  bool isOurs = IsLoopback(host->name);
  if (door == Door::Kind::Plain) {
    isOurs = isOurs && (host->port.empty() ? "80" : host->port) == std::to_string(port);
  } else {
    isOurs = isOurs || std::ranges::find(m_Settings.names, host->name) != m_Settings.names.end();
  }
  if (isOurs) return std::nullopt;
  return ErrorResponse(421, "wrong-host", "this server has another name");
}

std::optional<Response> Gate::Admit(Request& request, const Route* route, Door::Kind door,
                                    int port) {
  if (auto refused = CheckHost(request, door, port)) return refused;
  if (door != Door::Kind::Local)
    if (const auto wait = m_Requests.Take(request.address); wait.count() > 0) return TooOften(wait);
  if (auto refused = FindCaller(request, door)) return refused;
  if (IsChanging(request) && door != Door::Kind::Local && IsFromElsewhere(request))
    return ErrorResponse(403, "other-origin", "the request comes from another site");
  if (!route) return std::nullopt;
  if (route->role > request.caller.role) {
    if (request.caller.role != Role::Nobody)
      return ErrorResponse(403, "not-allowed", "your role does not allow this");
    Response response = ErrorResponse(401, "sign-in", "sign in first");
    response.Add("WWW-Authenticate", "Bearer");
    return response;
  }
  // A request without a form has to have the token among its headers: its body is not waited for.
  const auto type = HeaderValueOf(request.Header("content-type"));
  const bool isForm = type && (type->word == "application/x-www-form-urlencoded" ||
                               type->word == "multipart/form-data");
  if (!isForm || !request.Header("x-csrf-token").empty()) return AdmitBody(request, *route);
  return std::nullopt;
}

std::optional<Response> Gate::AdmitBody(const Request& request, const Route& route) const {
  if (!IsChanging(request) || !request.caller.byCookie || route.beginsSession) return std::nullopt;
  const std::string& header = request.Header("x-csrf-token");
  const std::string& given = header.empty() ? request.Form("csrf") : header;
  if (IsSameSecret(given, request.caller.formToken)) return std::nullopt;
  return ErrorResponse(403, "no-form-token",
                       "the request has not the token of its session, in X-CSRF-Token");
}

std::optional<Response> Gate::FindCaller(Request& request, Door::Kind door) {
  if (door == Door::Kind::Local) {
    request.caller = {m_Settings.ownName, Role::Manage, false, ""};
    return std::nullopt;
  }
  constexpr std::string_view Bearer = "bearer ";
  const std::string& given = request.Header("authorization");
  if (!given.empty()) {
    const bool isBearer = LowerCase(std::string_view(given).substr(0, Bearer.size())) == Bearer;
    if (door != Door::Kind::Plain || m_Settings.token.empty() || !isBearer ||
        !IsSameSecret(std::string_view(given).substr(Bearer.size()), m_Settings.token))
      return Failed(request, "");
    request.caller = {m_Settings.ownName, Role::Manage, false, ""};
    return std::nullopt;
  }
  const std::string& secret = request.Cookie(SessionCookie);
  if (secret.empty()) return std::nullopt;
  LookAtUsers();
  if (auto caller = m_Sessions.Find(secret, request.isSecure)) request.caller = *std::move(caller);
  return std::nullopt;
}

// Whoever was removed, or has another role or password now, signs in again. A file with a fault
// lets nobody in.
void Gate::LookAtUsers() {
  const std::lock_guard lock(m_UsersMutex);
  const std::wstring path = os::FromNative(UsersPath(m_Settings.dataRoot));
  const auto stamp = os::StampOf(path).ValueOr({});
  const auto change = os::LastChangeOf(path).ValueOr(0);
  if (stamp == m_UsersStamp && change == m_UsersChange) return;
  const std::vector<User> users = UsersOf(m_Settings.dataRoot).ValueOr({});
  for (const User& old : m_Users) {
    const auto now = std::ranges::find(users, old.name, &User::name);
    if (now == users.end() || now->role != old.role || now->hash != old.hash)
      m_Sessions.EndOf(old.name);
  }
  m_Users = users;
  m_UsersStamp = stamp;
  m_UsersChange = change;
}

Response Gate::Failed(const Request& request, const std::string& name) {
  auto wait = m_Failures.Take("address " + request.address);
  if (!name.empty()) wait = std::max(wait, m_Failures.Take("name " + name));
  if (wait.count() > 0) return TooOften(wait);
  Response response = ErrorResponse(401, "wrong-sign-in", "name, password or token is wrong");
  response.Add("WWW-Authenticate", "Bearer");
  return response;
}

std::optional<Response> Gate::Begin(const Request& request, const std::string& name, Role role,
                                    Caller& caller, std::string& secret) {
  const auto begun = m_Sessions.Begin(name, role, request.isSecure);
  if (!begun) return ErrorResponse(500, "failed", "no session can be begun");
  secret = *begun;
  caller = m_Sessions.Find(secret, request.isSecure).value_or(Caller());
  return std::nullopt;
}

std::optional<Response> Gate::SignInByToken(const Request& request, const std::string& token,
                                            Caller& caller, std::string& secret) {
  const bool isToken =
      !request.isSecure && !m_Settings.token.empty() && IsSameSecret(token, m_Settings.token);
  if (!isToken && !m_Sessions.TakeCode(token)) return Failed(request, "");
  return Begin(request, m_Settings.ownName, Role::Manage, caller, secret);
}

std::optional<Response> Gate::SignInByPassword(const Request& request, const std::string& name,
                                               const std::string& password, Caller& caller,
                                               std::string& secret) {
  if (!request.isSecure)
    return ErrorResponse(403, "not-allowed", "passwords are taken by TLS only");
  const auto wait =
      std::max(m_Failures.WaitOf("address " + request.address), m_Failures.WaitOf("name " + name));
  if (wait.count() > 0) return TooOften(wait);
  LookAtUsers();
  User user;
  {
    const std::lock_guard lock(m_UsersMutex);
    const auto found = std::ranges::find(m_Users, name, &User::name);
    if (found != m_Users.end()) user = *found;
  }
  const bool isThere = !user.name.empty();
  const bool isRight = IsPasswordOf(password, isThere ? user.hash : HashOfNobody());
  if (!isThere || !isRight) return Failed(request, CheckUserName(name) ? name : "");
  return Begin(request, user.name, user.role, caller, secret);
}

bool Gate::IsStillIn(const std::string& cookie, bool isSecure) {
  LookAtUsers();
  return m_Sessions.IsAlive(cookie, isSecure);
}

void Gate::SignOut(const Request& request) {
  if (request.caller.byCookie) m_Sessions.End(request.Cookie(SessionCookie));
}

}  // namespace rastrel::server::web
