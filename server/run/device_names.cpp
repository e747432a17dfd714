#include "server/run/device_names.h"

#include <algorithm>
#include <cstdint>

#include "children/devices/devices.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::server {
namespace {

constexpr std::uint64_t DevicesLimit = std::uint64_t{1} << 20;

}  // namespace

Expected<std::vector<std::string>> DeviceNames(const std::string& devicesFile,
                                               const ServerSettings& settings) {
  std::vector<std::string> names;
  for (const DeviceSettings& device : settings.devices) names.push_back(device.name);
  if (!os::Exists(os::FromNative(devicesFile))) return names;
  const auto text = os::ReadWholeFile(os::FromNative(devicesFile), DevicesLimit);
  if (!text) return FailureAt(devicesFile, text.Error());
  const auto sections = devices::ReadDevices(*text);
  if (!sections) return FailureAt(devicesFile, sections.Error());
  for (const devices::Device& section : *sections)
    if (section.printer != "*" && std::ranges::find(names, section.printer) == names.end())
      names.push_back(section.printer);
  return names;
}

}  // namespace rastrel::server
