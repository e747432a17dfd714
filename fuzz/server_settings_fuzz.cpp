// server.toml of any bytes: settings that were read are within their ranges, and a fault names its
// file.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string_view>

#include "server/settings/server_settings.h"

using namespace rastrel::server;

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

bool IsWithin(int value, int least, int greatest) { return value >= least && value <= greatest; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto settings = ReadSettings({reinterpret_cast<const char*>(bytes), size}, "server.toml");
  if (!settings) {
    Expect(rastrel::Describe(settings.Error()).find("server.toml") != std::string::npos);
    return 0;
  }
  Expect(IsWithin(settings->workers, 0, 256) && IsWithin(settings->readyJobs, 1, 1000));
  Expect(IsWithin(settings->retention.days, 0, 36500) && settings->retention.jobs >= 0);
  Expect(IsWithin(settings->printer.port, 1024, 65535));
  std::set<std::string> names;
  for (const DeviceSettings& device : settings->devices) {
    Expect(!device.name.empty() && device.name.size() <= 1024 && names.insert(device.name).second);
    Expect(device.address.empty() == (device.way == DeviceWay::Files));
    Expect(IsWithin(device.timeoutSeconds, 0, 604800) && IsWithin(device.retries, 0, 1000));
    Expect(settings->DeviceNamed(device.name).name == device.name);
  }
  return 0;
}
