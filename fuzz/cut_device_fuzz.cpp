// Device files of any bytes.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "cutting/device/device_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto device = rastrel::cutting::ReadDevice(text, "device.toml");
  // A device that is taken can be shown and has a form; one that is refused has a reason.
  if (device ? device->name.empty() || device->format.empty() : device.Error().why.empty()) {
    std::abort();
  }
  return 0;
}
