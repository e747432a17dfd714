#include "cli/server/browser.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "cli/console/other_programs.h"
#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/program_search.h"
#include "server/web/client/local_request.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto StartLimit = 30s;
constexpr auto LookInterval = 100ms;

bool HasDesktop() {
  return !os::EnvironmentValue("DISPLAY").empty() ||
         !os::EnvironmentValue("WAYLAND_DISPLAY").empty();
}

Expected<std::string> CodeOf(const std::string& socket, const std::function<bool()>& stops) {
  const auto limit = os::Deadline::After(StartLimit);
  for (;;) {
    const auto answer = server::web::PostLocally(socket, "/api/v1/handover");
    if (answer) {
      const auto object = nlohmann::json::parse(*answer, nullptr, false);
      if (object.is_object() && object.contains("token") && object["token"].is_string())
        return object["token"].get<std::string>();
      return FailureOf("the HTTP interface gives no code");
    }
    if (limit.HasPassed() || stops()) return answer;
    std::this_thread::sleep_for(LookInterval);
  }
}

// A listener for all addresses is reached by this machine's own.
std::string HostOf(const server::WebSettings& settings) {
  if (!settings.certificate.empty() && !settings.names.empty()) return settings.names.front();
  if (settings.address == "0.0.0.0" || settings.address == "::") return "localhost";
  const bool isIp6 = settings.address.find(':') != settings.address.npos;
  return isIp6 ? "[" + settings.address + "]" : settings.address;
}

}  // namespace

void OpenInBrowser(const server::WebSettings& settings, const std::function<bool()>& stops) {
  const auto code = CodeOf(os::DataRoot() + "/server/web.sock", stops);
  if (!code) {
    if (!stops()) WriteErrorLine("rastrel: no browser is opened: " + Describe(code.Error()));
    return;
  }
  const std::string address = std::string(settings.certificate.empty() ? "http" : "https") + "://" +
                              HostOf(settings) + ":" + std::to_string(settings.port) +
                              "/#token=" + *code;
  WriteOutLine(address);
  const std::string opener = HasDesktop() ? os::FindProgram("xdg-open") : std::string();
  if (opener.empty()) return;
  if (!StartAndForget(opener, {"xdg-open", address}))
    WriteErrorLine("rastrel: the browser can't be started");
}

}  // namespace rastrel::cli
