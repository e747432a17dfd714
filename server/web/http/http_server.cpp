#include "server/web/http/http_server.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <utility>
#include <vector>

#include "server/web/http/exchange.h"

namespace rastrel::server::web {
namespace {

using Connection = ConnectionWatch::Connection;

std::string AddressOf(const sockaddr* address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const void* number = nullptr;
  if (address && address->sa_family == AF_INET) {
    number = &reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
  } else if (address && address->sa_family == AF_INET6) {
    number = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
  } else {
    return "local";
  }
  const char* shown = ::inet_ntop(address->sa_family, number, text.data(), text.size());
  return shown ? shown : "unknown";
}

// The socket is this user's alone by its mode; whoever got it otherwise is found out here.
bool IsOwnUser(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::getuid();
}

void OnConnection(void* server, MHD_Connection* connection, void** context,
                  MHD_ConnectionNotificationCode code) {
  auto& parts = *static_cast<HttpServer::Parts*>(server);
  if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
    parts.watch.Remove(static_cast<Connection*>(*context));
    *context = nullptr;
    return;
  }
  const int socket =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
  const bool isLocal = parts.door.kind == Door::Kind::Local;
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  Connection* one =
      parts.watch.Add(socket, isLocal || !info ? "local" : AddressOf(info->client_addr));
  one->isRefused = isLocal && !IsOwnUser(socket);
  *context = one;
}

// The target as it came: it is decoded once, and by us.
void* OnTarget(void* server, const char* target, MHD_Connection*) {
  return new Exchange(*static_cast<HttpServer::Parts*>(server), target);
}

std::size_t KeepEncoded(void*, MHD_Connection*, char* text) {
  return std::char_traits<char>::length(text);
}

MHD_Result OnRequest(void*, MHD_Connection* connection, const char*, const char* method,
                     const char*, const char* piece, std::size_t* size, void** exchange) {
  auto* one = static_cast<Exchange*>(*exchange);
  return one->Go(connection, method, piece, size) == MHD_YES ? MHD_YES : MHD_NO;
}

void OnCompleted(void* server, MHD_Connection* connection, void** exchange,
                 MHD_RequestTerminationCode) {
  delete static_cast<Exchange*>(*exchange);
  *exchange = nullptr;
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  if (info && info->socket_context)
    static_cast<HttpServer::Parts*>(server)->watch.Enter(
        static_cast<Connection*>(info->socket_context), ConnectionWatch::Phase::Head);
}

void Ignore(void*, const char*, va_list) {}

}  // namespace

HttpServer::Parts::Parts(Door ownDoor, const Router& ownRouter, WorkerPool& ownWorkers,
                         Hooks ownHooks, std::string ownUploads, const Limits& ownLimits)
    : door(std::move(ownDoor)),
      router(ownRouter),
      workers(ownWorkers),
      hooks(std::move(ownHooks)),
      uploads(std::move(ownUploads)),
      limits(ownLimits),
      watch(ownLimits) {}

bool HttpServer::Parts::BeginWork() {
  const std::lock_guard lock(mutex);
  if (stops) return false;
  ++working;
  return true;
}

void HttpServer::Parts::EndWork() {
  // Under the lock, so that a server that waits doesn't go meanwhile.
  const std::lock_guard lock(mutex);
  if (--working == 0) quiet.notify_all();
}

HttpServer::HttpServer(std::unique_ptr<Parts> parts) : m_Parts(std::move(parts)) {}

HttpServer::~HttpServer() { Stop(); }

Expected<std::unique_ptr<HttpServer>> HttpServer::Start(Door door, const Router& router,
                                                        WorkerPool& workers, Hooks hooks,
                                                        const std::string& uploads,
                                                        const Limits& limits) {
  auto parts =
      std::make_unique<Parts>(std::move(door), router, workers, std::move(hooks), uploads, limits);
  if (auto started = parts->watch.Start(); !started) return started.Error();
  Parts& own = *parts;
  unsigned flags = MHD_USE_EPOLL | MHD_USE_INTERNAL_POLLING_THREAD | MHD_ALLOW_SUSPEND_RESUME;
  std::vector<MHD_OptionItem> options{
      {MHD_OPTION_EXTERNAL_LOGGER, reinterpret_cast<intptr_t>(&Ignore), nullptr},
      {MHD_OPTION_LISTEN_SOCKET, own.door.socket.Get(), nullptr},
      {MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<intptr_t>(limits.headBytes), nullptr},
      {MHD_OPTION_CONNECTION_LIMIT, limits.connections, nullptr},
      {MHD_OPTION_PER_IP_CONNECTION_LIMIT, limits.addressConnections, nullptr},
      {MHD_OPTION_CONNECTION_TIMEOUT, static_cast<intptr_t>(limits.idleTime.count()), nullptr},
      {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
      {MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 0, nullptr},
      {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<intptr_t>(&OnCompleted), &own},
      {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<intptr_t>(&OnConnection), &own},
      {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<intptr_t>(&OnTarget), &own},
      {MHD_OPTION_UNESCAPE_CALLBACK, reinterpret_cast<intptr_t>(&KeepEncoded), nullptr},
  };
  if (own.door.kind == Door::Kind::Tls) {
    flags |= MHD_USE_TLS;
    options.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, own.door.certificate.data()});
    options.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, own.door.key.data()});
    static std::string priorities = "SECURE128:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2";
    options.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, priorities.data()});
  }
  options.push_back({MHD_OPTION_END, 0, nullptr});
  own.daemon = MHD_start_daemon(flags, 0, nullptr, nullptr, &OnRequest, &own, MHD_OPTION_ARRAY,
                                options.data(), MHD_OPTION_END);
  if (!own.daemon)
    return FailureOf(own.door.kind == Door::Kind::Tls
                         ? "the HTTP interface can't start; see that certificate and key belong "
                           "together"
                         : "the HTTP interface can't start");
  // The library closes it.
  static_cast<void>(own.door.socket.Release());
  return std::unique_ptr<HttpServer>(new HttpServer(std::move(parts)));
}

void HttpServer::Stop() {
  Parts& parts = *m_Parts;
  if (!parts.daemon) return;
  std::list<std::weak_ptr<EventStream>> streams;
  {
    const std::lock_guard lock(parts.mutex);
    parts.stops = true;
    streams.swap(parts.streams);
  }
  for (const auto& one : streams)
    if (const auto stream = one.lock()) stream->Close();
  {
    std::unique_lock lock(parts.mutex);
    parts.quiet.wait(lock, [&] { return parts.working == 0; });
  }
  MHD_stop_daemon(std::exchange(parts.daemon, nullptr));
}

std::size_t HttpServer::Connections() const { return m_Parts->watch.Count(); }

}  // namespace rastrel::server::web
