// rastrel-web: the HTTP interface of the print shop's server.

#include <csignal>

#include <string>

#include "cli/console/exit_status.h"
#include "cli/server/open_queue.h"
#include "cli/web/shop_parts.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "server/queue/server_lock.h"
#include "server/run/helper_program.h"
#include "server/settings/server_settings.h"
#include "server/web/run/web_server.h"

namespace rastrel::cli {
namespace {

Expected<void> Serve(const sigset_t& signals) {
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
  return rastrel::server::RunHelperProgram(count, arguments, "rastrel-web",
                                           [](const sigset_t& signals) -> rastrel::Expected<void> {
                                             try {
                                               return rastrel::cli::Serve(signals);
                                             } catch (const rastrel::cli::CommandError& error) {
                                               return rastrel::FailureOf(error.what());
                                             }
                                           });
}
