#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "rastrel/platform/os/private_directory.h"
#include "server/web/access/audit_log.h"
#include "server/web/access/password.h"
#include "server/web/access/rate_limit.h"
#include "server/web/access/sessions.h"
#include "server/web/access/users_file.h"
#include "server/web/access/web_token.h"

namespace rastrel::server::web {
namespace {

using namespace std::chrono_literals;

unsigned ModeOf(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? state.st_mode & 07777U : 0;
}

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class AccessTest : public testing::Test {
 protected:
  AccessTest() : m_Place(*os::PrivateDirectory::Make("rastrel-access-")) {
    ::mkdir((m_Place.Path() + "/server").c_str(), 0700);
  }
  [[nodiscard]] std::string Path(const std::string& name) const {
    return m_Place.Path() + "/" + name;
  }
  os::PrivateDirectory m_Place;
};

TEST_F(AccessTest, a_token_is_another_each_time_and_for_this_user_alone) {
  const auto first = MakeToken(Path("token"));
  ASSERT_TRUE(first);
  EXPECT_EQ(first->size(), 64U);
  EXPECT_EQ(ModeOf(Path("token")), 0600U);
  EXPECT_EQ(ReadToken(Path("token")).ValueOr(""), *first);
  const auto second = MakeToken(Path("token"));
  ASSERT_TRUE(second);
  EXPECT_NE(*first, *second);
}

TEST_F(AccessTest, a_token_that_others_can_read_is_refused) {
  ASSERT_TRUE(MakeToken(Path("token")));
  ASSERT_EQ(::chmod(Path("token").c_str(), 0640), 0);
  EXPECT_FALSE(ReadToken(Path("token")));
  ASSERT_EQ(::chmod(Path("token").c_str(), 0600), 0);
  std::ofstream(Path("token")) << "short\n";
  EXPECT_FALSE(ReadToken(Path("token")));
}

TEST(Password, is_known_by_its_hash_alone) {
  const auto hash = HashOfPassword("correct horse");
  ASSERT_TRUE(hash);
  EXPECT_TRUE(hash->starts_with("$y$"));
  EXPECT_TRUE(IsPasswordHash(*hash));
  EXPECT_TRUE(IsPasswordOf("correct horse", *hash));
  EXPECT_FALSE(IsPasswordOf("correct hors", *hash));
  EXPECT_FALSE(IsPasswordOf("", *hash));
  EXPECT_NE(*HashOfPassword("correct horse"), *hash);
}

// From the description of SHA-crypt, its second test of SHA-512.
TEST(Password, knows_hashes_of_other_strong_methods) {
  const std::string hash =
      "$6$rounds=10000$saltstringsaltst$OW1/O6BYHV6BcXZu8QVeXbDWra3Oeqh0sbHbbMCVNSnCM/UrjmM0Dp8vOuZ"
      "eHBy/YTBmSK6H9qs/y3RnOaw5v.";
  EXPECT_TRUE(IsPasswordHash(hash));
  EXPECT_TRUE(IsPasswordOf("Hello world!", hash));
  EXPECT_FALSE(IsPasswordOf("Hello world?", hash));
}

TEST(Password, has_8_to_256_bytes) {
  EXPECT_FALSE(CheckPassword(std::string(7, 'x')));
  EXPECT_TRUE(CheckPassword(std::string(8, 'x')));
  EXPECT_TRUE(CheckPassword(std::string(256, 'x')));
  EXPECT_FALSE(CheckPassword(std::string(257, 'x')));
  EXPECT_FALSE(CheckPassword("12345678\n"));
  EXPECT_FALSE(CheckPassword(std::string("1234\0abcdef", 11)));
}

TEST(PasswordHash, is_no_plain_text_and_no_weak_method) {
  for (const char* text : {"", "secret", "$1$abcdefgh$0123456789012345678901", "$y$", "*",
                           "$y$j9T$abc\"def\nxxxxxxxxxxxxxxxxxxxxxxx", "rEK1ecacw.7.c"})
    EXPECT_FALSE(IsPasswordHash(text)) << text;
}

constexpr const char* Hash =
    "$6$rounds=10000$saltstringsaltst$OW1/O6BYHV6BcXZu8QVeXbDWra3Oeqh0sbHbbMCVNSnCM/UrjmM0Dp8vOuZ";

std::string UserText(const std::string& name, const std::string& role, const std::string& hash) {
  return "[[user]]\nname = \"" + name + "\"\nrole = \"" + role + "\"\npassword = \"" + hash +
         "\"\n";
}

std::string FaultOf(const std::string& text) {
  const auto users = ReadUsers(text, "users.toml");
  return users ? "" : Describe(users.Error());
}

TEST(UsersFile, gives_back_what_was_written) {
  const std::vector<User> users{{"ada", Role::See, Hash}, {"b.c-d_e@f", Role::Manage, Hash}};
  const auto read = ReadUsers(TextOfUsers(users), "users.toml");
  ASSERT_TRUE(read);
  ASSERT_EQ(read->size(), 2U);
  EXPECT_EQ((*read)[0].name, "ada");
  EXPECT_EQ((*read)[0].role, Role::See);
  EXPECT_EQ((*read)[1].role, Role::Manage);
  EXPECT_EQ((*read)[1].hash, Hash);
}

TEST(UsersFile, names_line_and_column_of_each_fault) {
  EXPECT_EQ(FaultOf(UserText("ada", "print", Hash)), "");
  EXPECT_TRUE(FaultOf(UserText("", "print", Hash)).starts_with("users.toml:2:8: "));
  EXPECT_TRUE(FaultOf(UserText("a b", "print", Hash)).starts_with("users.toml:2:8: "));
  EXPECT_TRUE(FaultOf(UserText("ada", "root", Hash)).starts_with("users.toml:3:8: "));
  EXPECT_TRUE(FaultOf(UserText("ada", "print", "secret12")).starts_with("users.toml:4:12: "));
  EXPECT_TRUE(FaultOf(UserText("ada", "see", Hash) + UserText("ada", "see", Hash))
                  .starts_with("users.toml:6:8: "));
  EXPECT_TRUE(FaultOf(UserText("ada", "see", Hash) + "colour = 1\n").starts_with("users.toml:5:"));
  EXPECT_TRUE(FaultOf("[[user]]\nname = \"a\"\n").starts_with("users.toml:1:"));
  EXPECT_TRUE(FaultOf("users = [").starts_with("users.toml:1:"));
}

TEST(UsersFile, takes_names_up_to_64_bytes) {
  EXPECT_TRUE(CheckUserName(std::string(63, 'a')));
  EXPECT_TRUE(CheckUserName(std::string(64, 'a')));
  EXPECT_FALSE(CheckUserName(std::string(65, 'a')));
  for (const char* name : {"", ".a", "-a", "a b", "a/b", "a\n", "\xC3\xA9", "a\"b"})
    EXPECT_FALSE(CheckUserName(name)) << name;
}

TEST_F(AccessTest, users_that_others_can_read_are_refused) {
  EXPECT_TRUE(UsersOf(m_Place.Path())->empty());
  ASSERT_TRUE(WriteUsers(m_Place.Path(), {{"ada", Role::Print, Hash}}));
  EXPECT_EQ(ModeOf(UsersPath(m_Place.Path())), 0600U);
  EXPECT_EQ(UsersOf(m_Place.Path())->size(), 1U);
  ASSERT_EQ(::chmod(UsersPath(m_Place.Path()).c_str(), 0644), 0);
  EXPECT_FALSE(UsersOf(m_Place.Path()));
}

TEST(RateLimit, lets_so_many_through_at_once_and_then_one_an_interval) {
  RateLimit limit(3, 100ms);
  const auto start = RateLimit::Clock::now();
  for (int count = 0; count < 3; ++count) EXPECT_EQ(limit.Take("a", start), 0ms);
  EXPECT_EQ(limit.Take("a", start), 100ms);
  EXPECT_EQ(limit.WaitOf("a", start), 100ms);
  EXPECT_EQ(limit.Take("b", start), 0ms);
  EXPECT_EQ(limit.Take("a", start + 99ms), 1ms);
  EXPECT_EQ(limit.Take("a", start + 100ms), 0ms);
  EXPECT_EQ(limit.Take("a", start + 100ms), 100ms);
  for (int count = 0; count < 3; ++count) EXPECT_EQ(limit.Take("a", start + 10s), 0ms);
  EXPECT_NE(limit.Take("a", start + 10s), 0ms);
}

TEST(RateLimit, forgets_the_key_that_was_seen_longest_ago) {
  RateLimit limit(1, 1h);
  const auto now = RateLimit::Clock::now();
  EXPECT_EQ(limit.Take("first", now), 0ms);
  for (std::size_t key = 1; key < RateLimit::KeyLimit; ++key)
    EXPECT_EQ(limit.Take(std::to_string(key), now), 0ms);
  EXPECT_NE(limit.Take("first", now), 0ms);
  EXPECT_EQ(limit.Take("one more", now), 0ms);
  EXPECT_NE(limit.Take("first", now), 0ms);
  EXPECT_EQ(limit.Take("1", now), 0ms);
}

TEST(RetryAfter, is_whole_seconds_and_never_none) {
  EXPECT_EQ(RetryAfter(1ms), "1");
  EXPECT_EQ(RetryAfter(1000ms), "1");
  EXPECT_EQ(RetryAfter(1001ms), "2");
}

TEST(Sessions, end_when_they_are_idle_or_old) {
  Sessions sessions;
  const auto start = Sessions::Clock::now();
  const auto secret = sessions.Begin("ada", Role::Print, false, start);
  ASSERT_TRUE(secret);
  const auto caller = sessions.Find(*secret, false, start + Sessions::IdleLimit);
  ASSERT_TRUE(caller);
  EXPECT_EQ(caller->name, "ada");
  EXPECT_TRUE(caller->byCookie);
  EXPECT_FALSE(sessions.Find(*secret, false, start + Sessions::IdleLimit * 2 + 1s));

  const auto busy = *sessions.Begin("ada", Role::Print, false, start);
  auto now = start;
  for (; now <= start + Sessions::WholeLimit; now += 6h)
    EXPECT_TRUE(sessions.Find(busy, false, now));
  EXPECT_FALSE(sessions.Find(busy, false, now));
}

TEST(Sessions, of_one_door_do_not_count_at_the_other) {
  Sessions sessions;
  const std::string plain = *sessions.Begin("ada", Role::Manage, false);
  const std::string safe = *sessions.Begin("ada", Role::Manage, true);
  EXPECT_FALSE(sessions.Find(plain, true));
  EXPECT_FALSE(sessions.Find(safe, false));
  EXPECT_TRUE(sessions.Find(safe, true));
  sessions.End(safe);
  EXPECT_FALSE(sessions.Find(safe, true));
  sessions.EndOf("ada");
  EXPECT_FALSE(sessions.Find(plain, false));
}

TEST(Sessions, beyond_the_limit_the_one_used_longest_ago_ends) {
  Sessions sessions;
  const auto start = Sessions::Clock::now();
  const std::string first = *sessions.Begin("a", Role::See, false, start);
  const std::string second = *sessions.Begin("b", Role::See, false, start + 1s);
  for (std::size_t count = 2; count < Sessions::MaximumSessions; ++count)
    ASSERT_TRUE(sessions.Begin("c", Role::See, false, start + 2s));
  EXPECT_TRUE(sessions.Find(first, false, start + 3s));
  ASSERT_TRUE(sessions.Begin("d", Role::See, false, start + 4s));
  EXPECT_TRUE(sessions.Find(first, false, start + 5s));
  EXPECT_FALSE(sessions.Find(second, false, start + 5s));
}

TEST(Sessions, a_code_counts_once_and_for_a_minute) {
  Sessions sessions;
  const auto start = Sessions::Clock::now();
  const std::string code = *sessions.NewCode(start);
  EXPECT_TRUE(sessions.TakeCode(code, start + Sessions::CodeLimit));
  EXPECT_FALSE(sessions.TakeCode(code, start));
  const std::string late = *sessions.NewCode(start);
  EXPECT_FALSE(sessions.TakeCode(late, start + Sessions::CodeLimit + 1ms));
  EXPECT_FALSE(sessions.TakeCode("", start));
  for (std::size_t count = 0; count < Sessions::MaximumCodes; ++count)
    EXPECT_TRUE(sessions.NewCode(start));
  EXPECT_FALSE(sessions.NewCode(start));
  EXPECT_TRUE(sessions.NewCode(start + Sessions::CodeLimit + 1s));
}

TEST_F(AccessTest, the_audit_log_has_one_clean_line_a_request) {
  AuditLog log(Path("audit.log"));
  Request request;
  request.method = Method::Post;
  request.path = "/api/\n\x1b[2J\xff";
  request.caller = {"ada\r", Role::Print, true, "secret"};
  request.address = "10.0.0.7";
  ASSERT_TRUE(log.Add(request, 200));
  ASSERT_TRUE(log.Add(request, 409));
  EXPECT_EQ(ModeOf(Path("audit.log")), 0600U);
  const std::string text = ContentOf(Path("audit.log"));
  EXPECT_EQ(std::ranges::count(text, '\n'), 2);
  EXPECT_EQ(text.find('\x1b'), text.npos);
  EXPECT_EQ(text.find("secret"), text.npos);
  const auto line = nlohmann::json::parse(text.substr(0, text.find('\n')));
  EXPECT_EQ(line["user"], "ada\\x0d");
  EXPECT_EQ(line["role"], "print");
  EXPECT_EQ(line["from"], "10.0.0.7");
  EXPECT_EQ(line["method"], "POST");
  EXPECT_EQ(line["path"], "/api/\\x0a\\x1b[2J\xEF\xBF\xBD");
  EXPECT_EQ(line["status"], 200);
}

TEST_F(AccessTest, an_audit_log_that_grew_too_large_becomes_an_old_one) {
  AuditLog log(Path("audit.log"), 100);
  const Request request;
  for (int count = 0; count < 3; ++count) ASSERT_TRUE(log.Add(request, 200));
  EXPECT_FALSE(ContentOf(Path("audit.log.1")).empty());
  EXPECT_LE(ContentOf(Path("audit.log")).size(), 250U);
}

TEST_F(AccessTest, an_audit_log_follows_no_link) {
  ASSERT_EQ(::symlink(Path("elsewhere").c_str(), Path("audit.log").c_str()), 0);
  EXPECT_FALSE(AuditLog(Path("audit.log")).Add(Request(), 200));
  EXPECT_EQ(ModeOf(Path("elsewhere")), 0U);
}

}  // namespace
}  // namespace rastrel::server::web
