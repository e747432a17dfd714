#include "server/web/access/gate.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "rastrel/platform/os/private_directory.h"
#include "server/web/access/password.h"

namespace rastrel::server::web {
namespace {

constexpr int Port = 8632;
constexpr const char* Token = "f00d";

class GateTest : public testing::Test {
 protected:
  GateTest() : m_Place(*os::PrivateDirectory::Make("rastrel-gate-")) {
    ::mkdir((m_Place.Path() + "/server").c_str(), 0700);
    m_Gate = MakeGate({});
  }
  [[nodiscard]] std::unique_ptr<Gate> MakeGate(const Gate::Rates& rates) const {
    return std::make_unique<Gate>(
        Gate::Settings{m_Place.Path(), "owner", Token, {"shop.example", "0.0.0.0"}}, rates);
  }
  void SetUsers(const std::vector<User>& users) const {
    ASSERT_TRUE(WriteUsers(m_Place.Path(), users));
  }

  [[nodiscard]] static Request Plain(Method method = Method::Get) {
    Request request;
    request.method = method;
    request.address = "127.0.0.1";
    request.headers = {{"host", "127.0.0.1:8632"}};
    return request;
  }
  [[nodiscard]] static Request Safe(Method method = Method::Get) {
    Request request = Plain(method);
    request.address = "10.0.0.7";
    request.isSecure = true;
    request.headers = {{"host", "shop.example"}};
    return request;
  }
  /// The status of the refusal; 0 if it is let in.
  int Status(Request& request, Role least = Role::Nobody) {
    Route route;
    route.method = request.method;
    route.role = least;
    const auto kind = request.isSecure ? Door::Kind::Tls : Door::Kind::Plain;
    if (const auto refused = m_Gate->Admit(request, &route, kind, Port)) return refused->status;
    const auto refused = m_Gate->AdmitBody(request, route);
    return refused ? refused->status : 0;
  }
  int StatusOf(Request request, Role least = Role::Nobody) { return Status(request, least); }

  /// A session by the token; the cookie and the form's token are set.
  Request InSession(Method method) {
    Request request = Plain(method);
    Caller caller;
    std::string secret;
    EXPECT_FALSE(m_Gate->SignInByToken(Plain(Method::Post), Token, caller, secret));
    request.cookies = {{SessionCookie, secret}};
    request.headers.emplace_back("x-csrf-token", caller.formToken);
    return request;
  }

  os::PrivateDirectory m_Place;
  std::unique_ptr<Gate> m_Gate;
};

TEST_F(GateTest, the_unix_socket_is_the_own_user) {
  Request request;
  request.address = "local";
  EXPECT_FALSE(m_Gate->Admit(request, nullptr, Door::Kind::Local, Port));
  EXPECT_EQ(request.caller.name, "owner");
  EXPECT_EQ(request.caller.role, Role::Manage);
}

TEST_F(GateTest, a_host_of_another_name_is_refused) {
  for (const char* host : {"localhost:8632", "127.0.0.1:8632", "[::1]:8632", "127.1.2.3:8632"}) {
    Request request = Plain();
    request.headers = {{"host", host}};
    EXPECT_EQ(Status(request), 0) << host;
  }
  for (const char* host : {"evil.example:8632", "localhost:8633", "localhost", "shop.example:8632",
                           "127.0.0.1.evil.example:8632", "localhost.:8632"}) {
    Request request = Plain();
    request.headers = {{"host", host}};
    EXPECT_EQ(Status(request), 421) << host;
  }
  Request none = Plain();
  none.headers.clear();
  EXPECT_EQ(Status(none), 400);
  Request other = Safe();
  other.headers = {{"host", "other.example"}};
  EXPECT_EQ(Status(other), 421);
  EXPECT_EQ(StatusOf(Safe()), 0);
}

TEST_F(GateTest, the_token_is_the_own_user_without_tls_only) {
  Request request = Plain();
  request.headers.emplace_back("authorization", "Bearer f00d");
  EXPECT_EQ(Status(request, Role::Manage), 0);
  EXPECT_EQ(request.caller.name, "owner");
  EXPECT_FALSE(request.caller.byCookie);
  for (const char* wrong : {"Bearer f00e", "Bearer ", "Basic f00d", "f00d", "Bearer f00d "}) {
    Request other = Plain();
    other.headers.emplace_back("authorization", wrong);
    EXPECT_EQ(Status(other), 401) << wrong;
  }
  Request safe = Safe();
  safe.headers.emplace_back("authorization", "Bearer f00d");
  EXPECT_EQ(Status(safe), 401);
}

TEST_F(GateTest, who_has_not_signed_in_sees_nothing) {
  EXPECT_EQ(StatusOf(Plain(), Role::Nobody), 0);
  for (const Role role : {Role::See, Role::Print, Role::Manage})
    EXPECT_EQ(StatusOf(Plain(), role), 401);
  Request forged = Plain();
  forged.cookies = {{SessionCookie, std::string(64, 'a')}};
  EXPECT_EQ(Status(forged, Role::See), 401);
}

TEST_F(GateTest, a_session_reads_with_its_cookie_alone) {
  Request request = InSession(Method::Get);
  request.headers.pop_back();
  EXPECT_EQ(Status(request, Role::Manage), 0);
}

TEST_F(GateTest, a_session_changes_with_its_token_alone) {
  EXPECT_EQ(StatusOf(InSession(Method::Post), Role::Manage), 0);
  Request without = InSession(Method::Post);
  without.headers.pop_back();
  EXPECT_EQ(Status(without, Role::Manage), 403);
  Request wrong = InSession(Method::Delete);
  wrong.headers.back().second.back() ^= 1;
  EXPECT_EQ(Status(wrong, Role::Manage), 403);
  Request form = InSession(Method::Post);
  form.form = {{"csrf", form.headers.back().second}};
  form.headers.back() = {"content-type", "application/x-www-form-urlencoded"};
  EXPECT_EQ(Status(form, Role::Manage), 0);
  form.form = {{"csrf", "x"}};
  EXPECT_EQ(Status(form, Role::Manage), 403);
  // Without a form no body is waited for.
  form.headers.back() = {"content-type", "application/json"};
  Route route;
  route.method = Method::Post;
  EXPECT_TRUE(m_Gate->Admit(form, &route, Door::Kind::Plain, Port));
}

TEST_F(GateTest, a_change_from_another_site_is_refused) {
  for (const auto& [name, value] : {std::pair("origin", "http://evil.example"),
                                    {"origin", "null"},
                                    {"origin", "https://127.0.0.1:8632"},
                                    {"origin", "http://127.0.0.1:8633"},
                                    {"sec-fetch-site", "cross-site"},
                                    {"sec-fetch-site", "same-site"}}) {
    Request request = InSession(Method::Post);
    request.headers.emplace_back(name, value);
    EXPECT_EQ(Status(request, Role::Manage), 403) << name << " " << value;
    Request token = Plain(Method::Post);
    token.headers.emplace_back("authorization", "Bearer f00d");
    token.headers.emplace_back(name, value);
    EXPECT_EQ(Status(token, Role::Manage), 403) << name << " " << value;
  }
  Request own = InSession(Method::Post);
  own.headers.emplace_back("origin", "http://127.0.0.1:8632");
  own.headers.emplace_back("sec-fetch-site", "same-origin");
  EXPECT_EQ(Status(own, Role::Manage), 0);
}

TEST_F(GateTest, users_sign_in_by_tls_with_their_passwords) {
  SetUsers({{"ada", Role::Print, *HashOfPassword("correct horse")}});
  Caller caller;
  std::string secret;
  EXPECT_EQ(m_Gate->SignInByPassword(Plain(), "ada", "correct horse", caller, secret)->status, 403);
  EXPECT_EQ(m_Gate->SignInByPassword(Safe(), "ada", "correct hors", caller, secret)->status, 401);
  EXPECT_EQ(m_Gate->SignInByPassword(Safe(), "bob", "correct horse", caller, secret)->status, 401);
  EXPECT_EQ(secret, "");
  ASSERT_FALSE(m_Gate->SignInByPassword(Safe(), "ada", "correct horse", caller, secret));
  EXPECT_EQ(caller.name, "ada");
  EXPECT_EQ(caller.role, Role::Print);

  Request request = Safe();
  request.cookies = {{SessionCookie, secret}};
  EXPECT_EQ(Status(request, Role::Print), 0);
  EXPECT_EQ(Status(request, Role::Manage), 403);
  Request plain = Plain();
  plain.cookies = request.cookies;
  EXPECT_EQ(Status(plain, Role::See), 401);
}

TEST_F(GateTest, a_user_who_is_changed_signs_in_again) {
  const std::string hash = *HashOfPassword("correct horse");
  const auto sessionOf = [&] {
    Caller caller;
    std::string secret;
    EXPECT_FALSE(m_Gate->SignInByPassword(Safe(), "ada", "correct horse", caller, secret));
    Request request = Safe();
    request.cookies = {{SessionCookie, secret}};
    return request;
  };
  SetUsers({{"ada", Role::Print, hash}, {"bob", Role::See, hash}});
  Request kept = sessionOf();
  EXPECT_EQ(Status(kept, Role::See), 0);
  SetUsers({{"ada", Role::Print, hash}});
  EXPECT_EQ(Status(kept, Role::See), 0);
  SetUsers({{"ada", Role::See, hash}});
  kept.caller = {};
  EXPECT_EQ(Status(kept, Role::See), 401);

  Request removed = sessionOf();
  SetUsers({});
  EXPECT_EQ(Status(removed, Role::See), 401);
}

TEST_F(GateTest, a_users_file_with_a_fault_lets_nobody_in) {
  SetUsers({{"ada", Role::Print, *HashOfPassword("correct horse")}});
  ASSERT_EQ(::chmod(UsersPath(m_Place.Path()).c_str(), 0644), 0);
  Caller caller;
  std::string secret;
  EXPECT_EQ(m_Gate->SignInByPassword(Safe(), "ada", "correct horse", caller, secret)->status, 401);
}

TEST_F(GateTest, who_fails_too_often_waits) {
  Gate::Rates rates;
  rates.failures = 3;
  m_Gate = MakeGate(rates);
  SetUsers({{"ada", Role::Print, *HashOfPassword("correct horse")}});
  Caller caller;
  std::string secret;
  for (int count = 0; count < 3; ++count)
    EXPECT_EQ(m_Gate->SignInByPassword(Safe(), "ada", "wrong password", caller, secret)->status,
              401);
  const auto refused = m_Gate->SignInByPassword(Safe(), "ada", "correct horse", caller, secret);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->status, 429);
  EXPECT_EQ(refused->Header("Retry-After"), "30");
  // The token can't be guessed: who has it does not wait for others of this machine.
  Request guess = Plain();
  guess.headers.emplace_back("authorization", "Bearer x");
  for (int count = 0; count < 3; ++count) EXPECT_EQ(Status(guess), 401);
  EXPECT_EQ(Status(guess), 429);
  guess.headers.back().second = "Bearer f00d";
  EXPECT_EQ(Status(guess, Role::Manage), 0);
}

TEST_F(GateTest, who_asks_too_often_waits) {
  Gate::Rates rates;
  rates.requests = 2;
  rates.requestInterval = std::chrono::hours(1);
  m_Gate = MakeGate(rates);
  EXPECT_EQ(StatusOf(Plain()), 0);
  EXPECT_EQ(StatusOf(Plain()), 0);
  EXPECT_EQ(StatusOf(Plain()), 429);
  Request other = Plain();
  other.address = "127.0.0.2";
  EXPECT_EQ(Status(other), 0);
}

TEST_F(GateTest, a_code_begins_one_session_at_either_door) {
  Caller caller;
  std::string secret;
  const std::string code = *m_Gate->NewCode();
  EXPECT_FALSE(m_Gate->SignInByToken(Safe(), code, caller, secret));
  EXPECT_EQ(caller.role, Role::Manage);
  EXPECT_EQ(m_Gate->SignInByToken(Safe(), code, caller, secret)->status, 401);
  EXPECT_EQ(m_Gate->SignInByToken(Safe(), Token, caller, secret)->status, 401);
}

TEST_F(GateTest, a_session_that_was_ended_is_none) {
  Request request = InSession(Method::Get);
  ASSERT_EQ(Status(request, Role::See), 0);
  m_Gate->SignOut(request);
  request.caller = {};
  EXPECT_EQ(Status(request, Role::See), 401);
}

TEST(SessionCookie, is_for_this_site_and_no_script) {
  EXPECT_EQ(SessionCookieOf("s", false), "rastrel-session=s; Path=/; HttpOnly; SameSite=Strict");
  EXPECT_EQ(SessionCookieOf("s", true),
            "rastrel-session=s; Path=/; HttpOnly; SameSite=Strict; Secure");
  EXPECT_EQ(SessionCookieOf("", false),
            "rastrel-session=; Path=/; HttpOnly; SameSite=Strict; Max-Age=0");
}

}  // namespace
}  // namespace rastrel::server::web
