#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/private_directory.h"
#include "server/queue/job_queue.h"
#include "server/web/access/web_token.h"
#include "server/web/run/web_server.h"
#include "tests/support/wait_until.h"

namespace rastrel::server::web {

/// An answer as it came.
struct Answer {
  int status = 0;  ///< 0: none came
  std::string head;
  std::string body;
};

/// A connection of a test, which sends any bytes.
class TestClient {
 public:
  [[nodiscard]] static TestClient Local(const std::string& path) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strncpy(place.sun_path, path.c_str(), sizeof place.sun_path - 1);
    TestClient client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(::connect(client.m_Socket.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place),
              0);
    return client;
  }
  [[nodiscard]] static TestClient Tcp(int port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(port));
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    TestClient client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(::connect(client.m_Socket.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place),
              0);
    return client;
  }

  /// Whether the other end took all of it.
  bool Send(std::string_view text) {
    while (!text.empty()) {
      const ssize_t sent = ::send(m_Socket.Get(), text.data(), text.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  /// The bytes until the text `end` is there, or the other end closes.
  std::string ReadUntil(std::string_view end) {
    std::array<char, 4096> piece{};
    while (m_Read.find(end) == m_Read.npos || end.empty()) {
      const ssize_t size = ::recv(m_Socket.Get(), piece.data(), piece.size(), 0);
      if (size <= 0) break;
      m_Read.append(piece.data(), static_cast<std::size_t>(size));
    }
    return m_Read;
  }
  /// Whether the other end has closed, without waiting.
  bool IsClosed() {
    std::array<char, 4096> piece{};
    for (;;) {
      const ssize_t size = ::recv(m_Socket.Get(), piece.data(), piece.size(), MSG_DONTWAIT);
      if (size == 0) return true;
      if (size < 0) return errno != EAGAIN && errno != EWOULDBLOCK;
      m_Read.append(piece.data(), static_cast<std::size_t>(size));
    }
  }
  [[nodiscard]] const std::string& Received() const { return m_Read; }
  [[nodiscard]] int Socket() const { return m_Socket.Get(); }

 private:
  explicit TestClient(int socket) : m_Socket(socket) {}
  os::FileDescriptor m_Socket;
  std::string m_Read;
};

inline Answer AnswerOf(const std::string& text) {
  Answer answer;
  const std::size_t end = text.find("\r\n\r\n");
  if (!text.starts_with("HTTP/1.1 ") || end == text.npos) return answer;
  answer.status = std::stoi(text.substr(9, 3));
  answer.head = text.substr(0, end + 2);
  answer.body = text.substr(end + 4);
  return answer;
}

/// A whole interface in this process, with a data root of its own.
class WebTest : public testing::Test {
 protected:
  WebTest() : m_Place(*os::PrivateDirectory::Make("rastrel-web-")) {
    auto queue = JobQueue::Open(Root());
    EXPECT_TRUE(queue);
    m_Queue = *std::move(queue);
    std::ofstream(Root() + "/index.html") << "<!doctype html>shop";
    m_Settings.ownName = "ada";
    m_Settings.web.port = 0;
  }
  ~WebTest() override { m_Server.reset(); }

  [[nodiscard]] const std::string& Root() const { return m_Place.Path(); }

  [[nodiscard]] Shop MakeShop() {
    ServerSettings settings;
    settings.jobMegabytes = m_JobMegabytes;
    return {.queue = *m_Queue,
            .dataRoot = Root(),
            .pageFiles = Root(),
            .settings = settings,
            .devices =
                [] {
                  return std::vector<std::string>{"Plotter", "Proofs"};
                },
            .check = [](const JobRequest& request) -> Expected<void> {
              return request.options.contains("nonsense")
                         ? Expected<void>(FailureOf("a print has no option 'nonsense'"))
                         : Expected<void>();
            },
            .pagesOf = [](const std::string&) { return std::vector<int>{1}; },
            .modes = [] { return std::vector<std::string>{"RGB/300 dpi.ps"}; },
            .tableHead = [] { return std::string("job\r\n"); },
            .tableRow = [](const Job& job) { return std::to_string(job.id) + "\r\n"; },
            .removePages = [](const std::string&) {},
            .runMerge = m_RunMerge};
  }
  void Start() {
    auto server = WebServer::Start(MakeShop(), m_Settings);
    ASSERT_TRUE(server) << (server ? "" : Describe(server.Error()));
    m_Server = *std::move(server);
  }

  [[nodiscard]] TestClient Local() const { return TestClient::Local(SocketPath(Root())); }
  [[nodiscard]] TestClient Tcp() const { return TestClient::Tcp(m_Server->Port()); }
  [[nodiscard]] std::string Token() const { return ReadToken(TokenPath(Root())).ValueOr(""); }
  [[nodiscard]] std::string Host() const {
    return "Host: 127.0.0.1:" + std::to_string(m_Server->Port()) + "\r\n";
  }

  /// A request by the Unix socket, whose connection ends with the answer.
  [[nodiscard]] Answer Ask(const std::string& methodAndPath, const std::string& body = {},
                           const std::string& headers = {}) const {
    TestClient client = Local();
    client.Send(methodAndPath + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n" + headers +
                (body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") +
                "\r\n" + body);
    return AnswerOf(client.ReadUntil(""));
  }
  /// One by TCP, with these headers.
  [[nodiscard]] Answer AskPort(const std::string& methodAndPath, const std::string& headers,
                               const std::string& body = {}) const {
    TestClient client = Tcp();
    client.Send(methodAndPath + " HTTP/1.1\r\nConnection: close\r\n" + headers +
                (body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n") +
                "\r\n" + body);
    return AnswerOf(client.ReadUntil(""));
  }

  JobId Submit(const std::string& owner, const std::string& title = "sign") {
    const std::string path = Root() + "/sign.ps";
    std::ofstream(path, std::ios::binary) << "%!PS\nshowpage\n";
    JobRequest request;
    request.path = path;
    request.title = title;
    request.owner = owner;
    request.source = "command";
    request.device = "Plotter";
    const auto id = m_Queue->Submit(request);
    EXPECT_TRUE(id);
    return id.ValueOr(0);
  }

  os::PrivateDirectory m_Place;
  std::unique_ptr<JobQueue> m_Queue;
  int m_JobMegabytes = 0;
  RunMerge m_RunMerge;
  WebServer::Settings m_Settings;
  std::unique_ptr<WebServer> m_Server;
};

}  // namespace rastrel::server::web
