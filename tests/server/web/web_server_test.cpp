#include "server/web/run/web_server.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/server/web/web_test_support.h"
#include "tests/support/threads.h"

namespace rastrel::server::web {
namespace {

using namespace std::chrono_literals;
using test::WaitUntil;

unsigned ModeOf(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? state.st_mode & 07777U : 0;
}

class WebServerTest : public WebTest {
 protected:
  [[nodiscard]] std::size_t Uploads() const {
    const std::filesystem::directory_iterator files(Root() + "/server/web/uploads");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
  }
};

TEST_F(WebServerTest, socket_and_token_are_for_this_user_alone) {
  Start();
  EXPECT_EQ(ModeOf(SocketPath(Root())), 0600U);
  EXPECT_EQ(ModeOf(TokenPath(Root())), 0600U);
  EXPECT_EQ(ModeOf(Root() + "/server/web"), 0700U);
}

TEST_F(WebServerTest, serves_a_data_root_once) {
  Start();
  const auto second = WebServer::Start(MakeShop(), m_Settings);
  EXPECT_FALSE(second);
  EXPECT_EQ(Ask("GET /api/v1/health").status, 200);
}

TEST_F(WebServerTest, does_not_start_without_tls_at_another_address) {
  m_Settings.web.address = "0.0.0.0";
  EXPECT_FALSE(WebServer::Start(MakeShop(), m_Settings));
}

TEST_F(WebServerTest, does_not_start_with_users_that_have_a_fault) {
  std::ofstream(UsersPath(Root())) << "nonsense";
  ::chmod(UsersPath(Root()).c_str(), 0600);
  const auto server = WebServer::Start(MakeShop(), m_Settings);
  ASSERT_FALSE(server);
  EXPECT_EQ(server.Error().line, 1);
}

TEST_F(WebServerTest, sweeps_files_that_an_earlier_program_left) {
  std::filesystem::create_directories(Root() + "/server/web/uploads");
  std::filesystem::permissions(Root() + "/server/web", std::filesystem::perms::owner_all);
  std::ofstream(Root() + "/server/web/uploads/.left") << "x";
  Start();
  EXPECT_EQ(Uploads(), 0U);
}

TEST_F(WebServerTest, every_answer_has_the_headers_of_security) {
  Start();
  for (const char* path : {"GET /", "GET /api/v1/health", "GET /nothing", "POST /", "GET /%"}) {
    const Answer answer = Ask(path);
    for (const char* header :
         {"\r\nContent-Security-Policy: default-src 'self'; ", "frame-ancestors 'none'",
          "\r\nX-Content-Type-Options: nosniff\r\n", "\r\nX-Frame-Options: DENY\r\n",
          "\r\nReferrer-Policy: same-origin\r\n", "\r\nCache-Control: no-"})
      EXPECT_NE(answer.head.find(header), std::string::npos) << path << header << answer.head;
  }
}

TEST_F(WebServerTest, answers_with_the_status_of_the_fault) {
  Start();
  EXPECT_EQ(Ask("GET /nothing").status, 404);
  EXPECT_EQ(Ask("POST /api/v1/health").status, 405);
  EXPECT_EQ(Ask("PUT /api/v1/jobs").status, 405);
  EXPECT_EQ(Ask("GET /a/../b").status, 400);
  EXPECT_EQ(Ask("GET /%2e%2e/b").status, 400);
  EXPECT_EQ(Ask("GET /a%00").status, 400);
  EXPECT_EQ(Ask("GET /?a=%zz").status, 400);
  EXPECT_EQ(Ask("GET http://localhost/").status, 400);
  EXPECT_EQ(Ask("GET /", "body").status, 413);
  EXPECT_EQ(Ask("GET /", "", "Cookie: a=1\r\nCookie: b=2\r\n").status, 400);
}

TEST_F(WebServerTest, a_length_that_is_given_twice_is_refused) {
  Start();
  TestClient client = Local();
  client.Send(
      "POST /api/v1/jobs/1/hold HTTP/1.1\r\nHost: localhost\r\nContent-Length: 5\r\n"
      "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\nGET /api/v1/jobs HTTP/1.1\r\nHost: a\r\n\r\n");
  const std::string all = client.ReadUntil("");
  EXPECT_EQ(AnswerOf(all).status, 400);
  EXPECT_EQ(all.find("HTTP/1.1", 8), all.npos) << all;
}

TEST_F(WebServerTest, the_body_of_a_refused_request_is_no_request) {
  Start();
  TestClient client = Tcp();
  const std::string hidden = "GET /api/v1/health HTTP/1.1\r\n" + Host() + "\r\n";
  client.Send("DELETE /api/v1/jobs/1 HTTP/1.1\r\n" + Host() +
              "Content-Length: " + std::to_string(hidden.size()) + "\r\n\r\n" + hidden);
  const std::string all = client.ReadUntil("");
  EXPECT_EQ(AnswerOf(all).status, 401);
  EXPECT_EQ(all.find("serving"), all.npos);
}

TEST_F(WebServerTest, headers_are_limited) {
  Start();
  const auto status = [&](std::size_t bytes) {
    return Ask("GET /api/v1/health", "", "X-Long: " + std::string(bytes, 'x') + "\r\n").status;
  };
  EXPECT_EQ(status(8000), 200);
  const int refused = status(40000);
  EXPECT_TRUE(refused == 431 || refused == 413 || refused == 0) << refused;
  EXPECT_EQ(Ask("GET /api/v1/health").status, 200);
}

TEST_F(WebServerTest, small_bodies_are_limited) {
  m_Settings.limits.smallBody = 1000;
  Start();
  const JobId id = Submit("ada");
  const std::string path = "POST /api/v1/jobs/" + std::to_string(id) + "/priority";
  const auto status = [&](std::size_t bytes) {
    const std::string object = R"({"priority":7)";
    return Ask(path, object + std::string(bytes - object.size() - 1, ' ') + "}").status;
  };
  EXPECT_EQ(status(999), 200);
  EXPECT_EQ(status(1000), 200);
  EXPECT_EQ(status(1001), 413);
  // The same when nothing says how long it will be.
  const auto chunked = [&](std::size_t bytes) {
    TestClient client = Local();
    std::array<char, 16> size{};
    std::snprintf(size.data(), size.size(), "%zx\r\n", bytes);
    client.Send(path +
                " HTTP/1.1\r\nHost: a\r\nConnection: close\r\nTransfer-Encoding: chunked\r\n\r\n" +
                size.data() + R"({"priority":8)" + std::string(bytes - 14, ' ') + "}\r\n0\r\n\r\n");
    return AnswerOf(client.ReadUntil("")).status;
  };
  EXPECT_EQ(chunked(1000), 200);
  EXPECT_EQ(chunked(1001), 413);
}

TEST_F(WebServerTest, files_are_limited) {
  m_JobMegabytes = 1;
  Start();
  const auto status = [&](std::size_t bytes) {
    return Ask("POST /api/v1/jobs?title=a", "%!PS\n" + std::string(bytes - 5, ' ')).status;
  };
  EXPECT_EQ(status(999'999), 201);
  EXPECT_EQ(status(1'000'000), 201);
  EXPECT_EQ(status(1'000'001), 413);
  EXPECT_EQ(status(9'000'000), 413);
  EXPECT_EQ(Uploads(), 0U);
}

TEST_F(WebServerTest, a_sender_of_a_byte_now_and_then_is_ended_and_others_go_on) {
  m_Settings.limits.headTime = 600ms;
  Start();
  TestClient slow = Tcp();
  const std::string request = "GET /api/v1/health HTTP/1.1\r\nHost: localhost\r\nX-Slow: ";
  std::size_t sent = 0;
  const bool closed = WaitUntil([&] {
    slow.Send(request.substr(std::min(sent++, request.size() - 1), 1));
    EXPECT_EQ(Ask("GET /api/v1/health").status, 200);
    std::this_thread::sleep_for(20ms);
    return slow.IsClosed();
  });
  EXPECT_TRUE(closed);
  EXPECT_EQ(slow.Received(), "");
}

TEST_F(WebServerTest, a_body_that_comes_too_slowly_is_ended) {
  m_Settings.limits.bodyTime = 600ms;
  m_Settings.limits.bodyRate = 1'000'000;
  Start();
  TestClient slow = Local();
  slow.Send("POST /api/v1/jobs HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100000\r\n\r\n%!PS");
  EXPECT_TRUE(WaitUntil([&] {
    slow.Send(" ");
    std::this_thread::sleep_for(20ms);
    return slow.IsClosed();
  }));
  EXPECT_TRUE(WaitUntil([&] { return Uploads() == 0; }));
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(WebServerTest, a_sender_who_goes_leaves_nothing) {
  Start();
  {
    TestClient client = Local();
    client.Send("POST /api/v1/jobs HTTP/1.1\r\nHost: a\r\nContent-Length: 100000\r\n\r\n%!PS\n");
    EXPECT_TRUE(WaitUntil([&] { return Uploads() == 1; }));
  }
  EXPECT_TRUE(WaitUntil([&] { return Uploads() == 0; }));
  EXPECT_TRUE(WaitUntil([&] { return m_Server->Connections() == 0; }));
  EXPECT_EQ(m_Queue->Count({}).ValueOr(-1), 0);
}

TEST_F(WebServerTest, two_hundred_readers_of_events_cost_no_thread) {
  Start();
  const JobId id = Submit("ada");
  const std::size_t threads = test::Threads();
  std::vector<TestClient> readers;
  for (int count = 0; count < 200; ++count) {
    readers.push_back(Local());
    readers.back().Send("GET /api/v1/events HTTP/1.1\r\nHost: localhost\r\n\r\n");
  }
  for (TestClient& reader : readers)
    ASSERT_NE(reader.ReadUntil(": connected\n").find("text/event-stream"), std::string::npos);
  EXPECT_EQ(test::Threads(), threads);
  EXPECT_EQ(Ask("POST /api/v1/jobs/" + std::to_string(id) + "/hold").status, 200);
  for (TestClient& reader : readers)
    EXPECT_NE(reader.ReadUntil("\"held\"").find("event: state\n"), std::string::npos);
  readers.clear();
}

TEST_F(WebServerTest, events_go_on_after_the_last_one_that_was_seen) {
  Start();
  const JobId id = Submit("ada");
  ASSERT_TRUE(m_Queue->Hold(id));
  ASSERT_TRUE(m_Queue->Release(id));
  const auto events = m_Queue->Events(0, id, 10);
  ASSERT_EQ(events->size(), 3U);
  const std::int64_t second = (*events)[1].number;
  TestClient reader = Local();
  reader.Send("GET /api/v1/events HTTP/1.1\r\nHost: a\r\nLast-Event-ID: " + std::to_string(second) +
              "\r\n\r\n");
  const std::string text = reader.ReadUntil("\"queued\"");
  EXPECT_EQ(text.find("\"held\""), text.npos);
  EXPECT_NE(text.find("id: " + std::to_string((*events)[2].number) + "\n"), text.npos);
  EXPECT_EQ(Ask("GET /api/v1/events", "", "Last-Event-ID: x\r\n").status, 400);
}

TEST_F(WebServerTest, the_events_of_a_session_end_with_it) {
  Start();
  const std::string token = R"({"token":")" + Token() + R"("})";
  const Answer begun = AskPort("POST /api/v1/session", Host(), token);
  ASSERT_EQ(begun.status, 200);
  const std::size_t at = begun.head.find("rastrel-session=");
  const std::string cookie = "Cookie: " + begun.head.substr(at, 80) + "\r\n";
  const std::size_t csrf = begun.body.find("\"csrf\":\"") + 8;
  TestClient reader = Tcp();
  reader.Send("GET /api/v1/events HTTP/1.1\r\n" + Host() + cookie + "\r\n");
  EXPECT_NE(reader.ReadUntil(": connected\n").find("200 OK"), std::string::npos);
  TestClient other = Tcp();
  other.Send("GET /api/v1/events HTTP/1.1\r\n" + Host() + "Authorization: Bearer " + Token() +
             "\r\n\r\n");
  EXPECT_NE(other.ReadUntil(": connected\n").find("200 OK"), std::string::npos);
  EXPECT_EQ(AskPort("DELETE /api/v1/session",
                    Host() + cookie + "X-CSRF-Token: " + begun.body.substr(csrf, 64) + "\r\n")
                .status,
            204);
  EXPECT_TRUE(
      WaitUntil([&] { return reader.Received().ends_with("\r\n0\r\n\r\n") || reader.IsClosed(); }));
  EXPECT_FALSE(other.IsClosed());
}

// Runs in a process of its own: 0 if the other end closed without an answer.
int AskAsNobody(const char* path) {
  constexpr uid_t Nobody = 65534;
  if (::setresuid(Nobody, Nobody, Nobody) != 0) return 2;
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  std::strncpy(place.sun_path, path, sizeof place.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  if (::connect(socket, reinterpret_cast<sockaddr*>(&place), sizeof place) != 0) return 3;
  constexpr std::string_view Text = "GET /api/v1/health HTTP/1.1\r\nHost: localhost\r\n\r\n";
  static_cast<void>(::send(socket, Text.data(), Text.size(), MSG_NOSIGNAL));
  char byte = 0;
  return ::recv(socket, &byte, 1, 0) <= 0 ? 0 : 1;
}

TEST_F(WebServerTest, another_user_is_closed_out_of_the_socket_whatever_its_mode) {
  if (::getuid() != 0) GTEST_SKIP() << "only root becomes another user";
  Start();
  for (const std::string& path : {Root(), Root() + "/server"})
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
  const std::string path = SocketPath(Root());
  ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
  const pid_t child = ::fork();
  if (child == 0) ::_exit(AskAsNobody(path.c_str()));
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Ask("GET /api/v1/health").status, 200);
}

TEST_F(WebServerTest, a_removed_job_shows_as_a_change) {
  Start();
  const JobId id = Submit("ada");
  TestClient reader = Local();
  reader.Send("GET /api/v1/events HTTP/1.1\r\nHost: localhost\r\n\r\n");
  static_cast<void>(reader.ReadUntil(": connected\n"));
  ASSERT_TRUE(m_Queue->Remove(id));
  EXPECT_NE(reader.ReadUntil("event: changed\n").find("event: changed\ndata: {}\n"),
            std::string::npos);
}

TEST_F(WebServerTest, stops_while_readers_and_senders_are_connected) {
  Start();
  TestClient reader = Local();
  reader.Send("GET /api/v1/events HTTP/1.1\r\nHost: localhost\r\n\r\n");
  static_cast<void>(reader.ReadUntil(": connected\n"));
  TestClient sender = Local();
  sender.Send("POST /api/v1/jobs HTTP/1.1\r\nHost: a\r\nContent-Length: 100000\r\n\r\n%!PS\n");
  EXPECT_TRUE(WaitUntil([&] { return Uploads() == 1; }));
  m_Server.reset();
  EXPECT_TRUE(WaitUntil([&] { return reader.IsClosed() && sender.IsClosed(); }));
  EXPECT_EQ(Uploads(), 0U);
}

TEST_F(WebServerTest, pages_have_tags) {
  Start();
  const Answer page = Ask("GET /static/index.html");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(page.body, "<!doctype html>shop");
  const std::size_t at = page.head.find("ETag: ") + 6;
  const std::string tag = page.head.substr(at, page.head.find("\r\n", at) - at);
  EXPECT_EQ(Ask("GET /static/index.html", "", "If-None-Match: " + tag + "\r\n").status, 304);
  EXPECT_EQ(Ask("GET /static/index.html", "", "If-None-Match: \"x\"\r\n").status, 200);
  EXPECT_EQ(Ask("GET /static/none.js").status, 404);
  EXPECT_EQ(Ask("GET /static/server.toml").status, 404);
}

TEST_F(WebServerTest, head_has_no_body) {
  Start();
  const Answer answer = Ask("HEAD /static/index.html");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, "");
  EXPECT_NE(answer.head.find("Content-Length: 19\r\n"), std::string::npos);
}

}  // namespace
}  // namespace rastrel::server::web
