#include "server/web/client/local_request.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::server::web {
namespace {

constexpr int WaitMilliseconds = 10000;
constexpr std::size_t AnswerLimit = 65536;

Expected<os::FileDescriptor> Connect(const std::string& path) {
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  if (path.size() >= sizeof place.sun_path)
    return FailureAt(path, FailureOf("the path is too long for a socket"));
  std::memcpy(place.sun_path, path.c_str(), path.size() + 1);
  os::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.IsOpen()) return Failure{"socket", path, errno};
  if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0)
    return Failure{"connect", path, errno};
  return socket;
}

// All until the other end closes.
Expected<std::string> ReadAnswer(int socket, const std::string& path) {
  std::string answer;
  std::array<char, 4096> piece{};
  while (answer.size() < AnswerLimit) {
    pollfd wait{socket, POLLIN, 0};
    if (::poll(&wait, 1, WaitMilliseconds) <= 0)
      return FailureAt(path, FailureOf("the HTTP interface does not answer"));
    const ssize_t size = ::read(socket, piece.data(), piece.size());
    if (size < 0) return Failure{"read", path, errno};
    if (size == 0) break;
    answer.append(piece.data(), static_cast<std::size_t>(size));
  }
  return answer;
}

}  // namespace

Expected<std::string> PostLocally(const std::string& socketPath, const std::string& path) {
  const auto socket = Connect(socketPath);
  if (!socket) return socket.Error();
  const std::string request = "POST " + path +
                              " HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n"
                              "Connection: close\r\n\r\n";
  const ssize_t sent = ::send(socket->Get(), request.data(), request.size(), MSG_NOSIGNAL);
  if (sent != static_cast<ssize_t>(request.size())) return Failure{"write", socketPath, errno};
  const auto answer = ReadAnswer(socket->Get(), socketPath);
  if (!answer) return answer;
  constexpr std::string_view Begin = "HTTP/1.1 ";
  const std::size_t body = answer->find("\r\n\r\n");
  if (!answer->starts_with(Begin) || body == answer->npos)
    return FailureAt(socketPath, FailureOf("this is no answer of the HTTP interface"));
  const std::string status = answer->substr(Begin.size(), 3);
  if (!status.starts_with('2'))
    return FailureAt(socketPath, FailureOf("the HTTP interface answers with status " + status));
  return answer->substr(body + 4);
}

}  // namespace rastrel::server::web
