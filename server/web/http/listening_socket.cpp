#include "server/web/http/listening_socket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server::web {
namespace {

constexpr int Backlog = 128;
constexpr int SocketFlags = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;

}  // namespace

Expected<os::FileDescriptor> ListenLocally(const std::string& path) {
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  if (path.size() >= sizeof place.sun_path)
    return FailureAt(path, FailureOf("the path is too long for a socket"));
  std::memcpy(place.sun_path, path.c_str(), path.size() + 1);
  struct stat old {};
  if (::lstat(path.c_str(), &old) == 0) {
    if (!S_ISSOCK(old.st_mode)) return FailureAt(path, FailureOf("this is no socket"));
    if (auto removed = os::RemoveFile(os::FromNative(path)); !removed) return removed.Error();
  }
  os::FileDescriptor socket(::socket(AF_UNIX, SocketFlags, 0));
  if (!socket.IsOpen()) return Failure{"socket", path, errno};
  // The name has the socket's own mode from its first moment.
  if (::fchmod(socket.Get(), 0600) != 0) return Failure{"chmod", path, errno};
  if (::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0)
    return Failure{"bind", path, errno};
  if (::chmod(path.c_str(), 0600) != 0) return Failure{"chmod", path, errno};
  if (::listen(socket.Get(), Backlog) != 0) return Failure{"listen", path, errno};
  return socket;
}

Expected<os::FileDescriptor> ListenAt(const std::string& host, int port) {
  const std::string where = host + " port " + std::to_string(port);
  addrinfo wanted{};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int code = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found);
  if (code != 0) return FailureAt(where, FailureOf(::gai_strerror(code)));
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
  os::FileDescriptor socket(::socket(found->ai_family, SocketFlags, 0));
  if (!socket.IsOpen()) return Failure{"socket", where, errno};
  const int on = 1;
  if (::setsockopt(socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0)
    return Failure{"setsockopt", where, errno};
  if (::bind(socket.Get(), found->ai_addr, found->ai_addrlen) != 0)
    return Failure{"bind", where, errno};
  if (::listen(socket.Get(), Backlog) != 0) return Failure{"listen", where, errno};
  return socket;
}

int PortOf(int socket) {
  sockaddr_storage place{};
  socklen_t size = sizeof place;
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&place), &size) != 0) return 0;
  if (place.ss_family == AF_INET)
    return ntohs(reinterpret_cast<const sockaddr_in*>(&place)->sin_port);
  if (place.ss_family == AF_INET6)
    return ntohs(reinterpret_cast<const sockaddr_in6*>(&place)->sin6_port);
  return 0;
}

bool IsLoopback(const std::string& host) {
  if (host == "localhost" || host == "::1") return true;
  return host.starts_with("127.") && host.find_first_not_of("0123456789.") == host.npos;
}

}  // namespace rastrel::server::web
