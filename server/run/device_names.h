#pragma once

#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/settings/server_settings.h"

namespace rastrel::server {

/// The devices that a job of this server can be for: those of the settings, then those of the data
/// root's devices.txt that have other names. The section that takes every name is none of them.
/// Without that file (native path) only the settings'. Fails with the file and line of a fault.
[[nodiscard]] Expected<std::vector<std::string>> DeviceNames(const std::string& devicesFile,
                                                             const ServerSettings& settings);

}  // namespace rastrel::server
