#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/web/access/gate.h"
#include "server/web/http/limits.h"
#include "server/web/shop.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {

/// The HTTP interface of a data root: its routes and its doors, the Unix socket `server/web.sock`
/// and the address of the settings.
///
///     doors --- requests ---> gate ---> router ---> handlers on workers ---> queue
///       ^                                                                      |
///       +--------------- event streams <--- feed <------------- bell ----------+
class WebServer {
 public:
  struct Settings {
    std::string ownName;  ///< the user that this process runs as
    WebSettings web;      ///< port 0 is any free one
    Limits limits;
    Gate::Rates rates;
    Templates::Limits templates{};
  };

  /// Makes a token, and serves. Fails if another process serves this data root's interface, if the
  /// address is in use, and for certificates and users with a fault.
  [[nodiscard]] static Expected<std::unique_ptr<WebServer>> Start(Shop shop, Settings settings);
  /// Stops: waits for handlers that run, and closes all connections.
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  [[nodiscard]] int Port() const;
  /// Of both doors, at present.
  [[nodiscard]] std::size_t Connections() const;
  [[nodiscard]] const std::vector<Route>& Routes() const;

 private:
  struct Parts;
  explicit WebServer(std::unique_ptr<Parts> parts);
  std::unique_ptr<Parts> m_Parts;
};

/// The files of a data root's interface, native.
[[nodiscard]] std::string SocketPath(const std::string& dataRoot);
[[nodiscard]] std::string TokenPath(const std::string& dataRoot);
[[nodiscard]] std::string AuditPath(const std::string& dataRoot);

}  // namespace rastrel::server::web
