#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/health_check.h"
#include "cli/console/options.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {

/// The port of a part of the server: it can be had, or the server of this data root has it.
[[nodiscard]] HealthCheck CheckPort(const char* name, const std::string& address, int port,
                                    bool isServing);

/// The certificate of the HTTP interface and its key; `now` in seconds since 1970-01-01 00:00 UTC.
[[nodiscard]] HealthCheck CheckCertificate(const server::WebSettings& web, std::int64_t now);

/// A hot folder of this user's server. `known` says whether there is a device of a name.
[[nodiscard]] HealthCheck CheckHotFolder(const std::string& folder,
                                         const std::function<bool(const std::string&)>& known);

/// A device of server.toml: the thing that its address names is there.
[[nodiscard]] HealthCheck CheckDevice(const server::DeviceSettings& device);

/// The server's part of `rastrel doctor`, which starts this program for it: Done, or NotInstalled
/// if a check is Bad. Nothing is changed.
[[nodiscard]] ExitStatus ServerHealthCommand(const Invocation& invocation);

}  // namespace rastrel::cli
