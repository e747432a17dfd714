#include "server/web/run/web_server.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdint>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "rastrel/platform/os/trusted_file.h"
#include "server/web/access/audit_log.h"
#include "server/web/access/secret_file.h"
#include "server/web/access/web_token.h"
#include "server/web/api/event_feed.h"
#include "server/web/api/job_routes.h"
#include "server/web/api/session_routes.h"
#include "server/web/api/static_files.h"
#include "server/web/api/template_routes.h"
#include "server/web/http/address_text.h"
#include "server/web/http/http_server.h"
#include "server/web/http/listening_socket.h"
#include "server/web/pages/pages.h"
#include "server/web/pages/template_pages.h"
#include "server/web/preview/previews.h"
#include "server/web/templates/templates.h"

namespace rastrel::server::web {
namespace {

constexpr std::size_t Workers = 4;
constexpr std::size_t WaitingRequests = 512;
constexpr std::uint64_t PemLimit = 1'000'000;

// One program serves a data root's interface; the lock ends with it.
Expected<os::FileDescriptor> LockInterface(const std::string& directory) {
  const std::string path = directory + "/lock";
  os::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.IsOpen()) return Failure{"open", path, errno};
  if (::flock(file.Get(), LOCK_EX | LOCK_NB) == 0) return file;
  if (errno != EWOULDBLOCK) return Failure{"lock", path, errno};
  return FailureOf("the HTTP interface of this data root is served already");
}

// The directory of files on their way, without those that an earlier program left.
Expected<std::string> MakeUploads(const std::string& directory) {
  const std::string uploads = directory + "/uploads";
  if (os::Exists(os::FromNative(uploads)))
    if (auto removed = os::RemoveNativeTree(uploads); !removed) return removed.Error();
  if (auto made = os::MakePath(os::FromNative(uploads), os::Access::Private); !made)
    return made.Error();
  return uploads;
}

Expected<Door> OpenDoor(const WebSettings& web) {
  Door door;
  door.kind = web.certificate.empty() ? Door::Kind::Plain : Door::Kind::Tls;
  if (door.kind == Door::Kind::Plain && !IsLoopback(web.address))
    return FailureOf("an address that other machines reach needs certificate and key");
  if (door.kind == Door::Kind::Tls) {
    auto certificate = os::ReadWholeFile(os::FromNative(web.certificate), PemLimit);
    if (!certificate) return FailureAt(web.certificate, certificate.Error());
    auto key = ReadSecretFile(web.key, PemLimit);
    if (!key) return key.Error();
    door.certificate = *std::move(certificate);
    door.key = *std::move(key);
  }
  auto socket = ListenAt(web.address, web.port);
  if (!socket) return socket.Error();
  door.socket = *std::move(socket);
  return door;
}

Gate::Settings GateSettings(const Shop& shop, const WebServer::Settings& settings,
                            const std::string& token) {
  std::vector<std::string> names = settings.web.names;
  names.push_back(LowerCase(settings.web.address));
  return {shop.dataRoot, settings.ownName, token, std::move(names)};
}

// Pictures of plates are asked for by POST, with each letter that is typed.
bool IsPictureOfPlate(const Request& request) {
  const bool isForm = request.path.starts_with("/templates/") && request.Form("action") == "show";
  return isForm ||
         (request.path.starts_with("/api/v1/templates/") && request.path.ends_with("/picture"));
}

// Requests that change something, and senders that are not let in.
bool IsForAudit(const Request& request, const Response& response) {
  const bool isRefused = response.status == 401 || response.status == 403 || response.status == 421;
  return isRefused || (request.method != Method::Get && !IsPictureOfPlate(request));
}

}  // namespace

struct WebServer::Parts {
  Parts(Shop ownShop, Gate::Settings gateSettings, const Gate::Rates& rates)
      : shop(std::move(ownShop)),
        gate(std::move(gateSettings), rates),
        audit(AuditPath(shop.dataRoot)),
        feed(shop.queue),
        workers(Workers, WaitingRequests) {}

  [[nodiscard]] Hooks HooksOf(Door::Kind kind);
  [[nodiscard]] Expected<void> Serve(Door door, const Limits& limits);
  void AddRoutes();

  // In the order in which they begin; they end in the other one.
  Shop shop;
  os::FileDescriptor lock;
  Gate gate;
  AuditLog audit;
  Router router;
  std::string uploads;
  std::unique_ptr<Templates> templates;
  int port = 0;
  EventFeed feed;
  WorkerPool workers;
  std::vector<std::unique_ptr<HttpServer>> servers;
};

Hooks WebServer::Parts::HooksOf(Door::Kind kind) {
  Hooks hooks;
  hooks.admit = [this, kind](Request& request, const Route* route) {
    return gate.Admit(request, route, kind, port);
  };
  hooks.admitBody = [this](const Request& request, const Route& route) {
    return gate.AdmitBody(request, route);
  };
  hooks.answered = [this](const Request& request, const Response& response) {
    if (!IsForAudit(request, response)) return;
    if (const auto added = audit.Add(request, response.status); !added)
      os::WriteToStandardError("rastrel-web: " + Describe(added.Error()) + "\n");
  };
  return hooks;
}

Expected<void> WebServer::Parts::Serve(Door door, const Limits& limits) {
  const Door::Kind kind = door.kind;
  auto server = HttpServer::Start(std::move(door), router, workers, HooksOf(kind), uploads, limits);
  if (!server) return server.Error();
  servers.push_back(*std::move(server));
  return {};
}

void WebServer::Parts::AddRoutes() {
  AddStaticFiles(router, shop);
  AddSessions(router, gate);
  AddJobViews(router, shop);
  AddJobEntry(router, shop);
  AddJobChanges(router, shop);
  AddDevices(router, shop);
  AddEvents(router, feed, [this](const std::string& cookie, bool isSecure) {
    return gate.IsStillIn(cookie, isSecure);
  });
  AddPages(router, shop);
  AddPreviews(router, shop);
  AddTemplates(router, shop, *templates);
  AddTemplatePages(router, shop, *templates);
}

WebServer::WebServer(std::unique_ptr<Parts> parts) : m_Parts(std::move(parts)) {}

WebServer::~WebServer() = default;

Expected<std::unique_ptr<WebServer>> WebServer::Start(Shop shop, Settings settings) {
  const std::string root = shop.dataRoot;
  const std::string directory = root + "/server/web";
  if (auto made = os::MakePath(os::FromNative(directory), os::Access::Private); !made)
    return made.Error();
  if (auto trusted = os::CheckTrusted(directory, root); !trusted) return trusted.Error();
  auto lock = LockInterface(directory);
  if (!lock) return lock.Error();
  auto uploads = MakeUploads(directory);
  if (!uploads) return uploads.Error();
  // A file with a fault lets nobody in: who starts the server is to know.
  if (const auto users = UsersOf(root); !users) return users.Error();
  const auto token = MakeToken(TokenPath(root));
  if (!token) return token.Error();

  auto local = ListenLocally(SocketPath(root));
  if (!local) return local.Error();
  auto door = OpenDoor(settings.web);
  if (!door) return door.Error();

  auto parts = std::make_unique<Parts>(shop, GateSettings(shop, settings, *token), settings.rates);
  parts->lock = *std::move(lock);
  parts->uploads = *uploads;
  parts->port = PortOf(door->socket.Get());
  const std::string& named = shop.settings.web.templates;
  parts->templates = std::make_unique<Templates>(named.empty() ? root + "/templates" : named,
                                                 *uploads, shop.runMerge, settings.templates);
  parts->AddRoutes();
  if (auto started = parts->feed.Start(); !started) return started.Error();
  if (auto started = parts->workers.Start(); !started) return started.Error();
  Limits limits = settings.limits;
  limits.upload = shop.settings.jobMegabytes * std::int64_t{1'000'000};
  if (auto served = parts->Serve({Door::Kind::Local, *std::move(local)}, limits); !served)
    return served.Error();
  // All browsers of this machine have one address.
  if (IsLoopback(settings.web.address)) limits.addressConnections = 0;
  if (auto served = parts->Serve(*std::move(door), limits); !served) return served.Error();
  return std::unique_ptr<WebServer>(new WebServer(std::move(parts)));
}

int WebServer::Port() const { return m_Parts->port; }

std::size_t WebServer::Connections() const {
  std::size_t count = 0;
  for (const auto& server : m_Parts->servers) count += server->Connections();
  return count;
}

const std::vector<Route>& WebServer::Routes() const { return m_Parts->router.Routes(); }

std::string SocketPath(const std::string& dataRoot) { return dataRoot + "/server/web.sock"; }
std::string TokenPath(const std::string& dataRoot) { return dataRoot + "/server/web.token"; }
std::string AuditPath(const std::string& dataRoot) { return dataRoot + "/server/audit.log"; }

}  // namespace rastrel::server::web
