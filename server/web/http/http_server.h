#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "server/web/http/limits.h"
#include "server/web/http/request.h"
#include "server/web/http/response.h"
#include "server/web/http/router.h"
#include "server/web/http/worker_pool.h"

namespace rastrel::server::web {

/// Where requests come in.
struct Door {
  enum class Kind {
    Local,  ///< a Unix socket; a peer that is another user is closed out
    Plain,  ///< TCP without TLS
    Tls,    ///< TCP with TLS
  };
  Kind kind = Kind::Local;
  os::FileDescriptor socket;  ///< listens
  std::string certificate{};  ///< of Tls, PEM
  std::string key{};          ///< ...
};

/// What the server asks its owner.
struct Hooks {
  /// Called when a request's headers are there, on the thread that all connections share, so it may
  /// not wait: finds out who sends it (Request::caller), and returns an answer if it is refused.
  /// The route is null if there is none.
  std::function<std::optional<Response>(Request&, const Route*)> admit;
  /// Called on a worker when the body is there, too; returns an answer if the request is refused.
  std::function<std::optional<Response>(const Request&, const Route&)> admitBody;
  /// Called when the answer is made, on a worker or that thread.
  std::function<void(const Request&, const Response&)> answered;
};

/// HTTP at one door. One thread moves all bytes; handlers run on the workers, so that no connection
/// has a thread of its own, whether its peer is slow, or reads events for days.
class HttpServer {
 public:
  struct Parts;

  /// Begins to serve. The router, the workers and the directory for uploads must outlive it.
  [[nodiscard]] static Expected<std::unique_ptr<HttpServer>> Start(Door door, const Router& router,
                                                                   WorkerPool& workers, Hooks hooks,
                                                                   const std::string& uploads,
                                                                   const Limits& limits);
  /// Stops.
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  /// Waits for handlers that run, ends streams and closes all connections.
  void Stop();
  /// Connections at present.
  [[nodiscard]] std::size_t Connections() const;

 private:
  explicit HttpServer(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> m_Parts;
};

}  // namespace rastrel::server::web
