// rastrel-web: the HTTP interface of the print shop's server. `rastrel serve` starts it and starts
// it again. It ends with its starter.

#include <signal.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/server/open_queue.h"
#include "cli/web/shop_parts.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/reaper.h"
#include "server/queue/server_lock.h"
#include "server/settings/server_settings.h"
#include "server/web/run/web_server.h"

namespace rastrel::cli {
namespace {

Expected<void> Serve() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(::umask(077));

  const std::string root = os::DataRoot();
  const auto settings = server::SettingsOf(root);
  if (!settings) return settings.Error();
  const auto queue = OpenJobQueue();
  const auto server = server::web::WebServer::Start(
      ShopOf(*queue, *settings),
      {.ownName = server::OwnUserName(), .web = settings->web, .limits = {}, .rates = {}});
  if (!server) return server.Error();
  const bool isSafe = !settings->web.certificate.empty();
  os::WriteToStandardError(std::string("rastrel-web: serving ") + (isSafe ? "https" : "http") +
                           "://" + settings->web.address + ":" + std::to_string((*server)->Port()) +
                           "/\n");
  int signal = 0;
  ::sigwait(&signals, &signal);
  return {};
}

}  // namespace
}  // namespace rastrel::cli

int main(int count, char** arguments) {
  // With a starter's number it ends with it; by hand it has none.
  if (count == 2) {
    const auto starter = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    if (!rastrel::os::EndWithStarter(starter)) return EXIT_FAILURE;
  }
  rastrel::Expected<void> served;
  try {
    served = rastrel::cli::Serve();
  } catch (const rastrel::cli::CommandError& error) {
    served = rastrel::FailureOf(error.what());
  }
  if (served) return EXIT_SUCCESS;
  rastrel::os::WriteToStandardError("rastrel-web: " + rastrel::Describe(served.Error()) + "\n");
  return EXIT_FAILURE;
}
