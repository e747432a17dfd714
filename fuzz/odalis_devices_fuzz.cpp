// The reader of the devices file against any text. The patterns that it accepts can be filled in,
// and a job's name never leads out of the directory that the pattern names.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "children/devices/devices.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace rastrel::devices;
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::string safe = SafeName(text);
  if (safe.empty() || safe.size() > SafeNameLimit || safe.front() == '.' || safe.front() == '-' ||
      safe.find_first_of(std::string_view("/\\\0\n", 4)) != std::string::npos) {
    std::abort();
  }
  const auto devices = ReadDevices(text);
  if (!devices) {
    if (!Describe(devices.Error()).starts_with("line ")) std::abort();
    return 0;
  }
  FieldValues values;
  values.output = "/out";
  values.job = "../../etc/passwd";
  values.plane = "/";
  for (const Device& device : *devices) {
    if (FindDevice(*devices, device.printer) != &device) std::abort();
    if (device.kind == DeviceKind::File && device.pattern.Expand(values).front() != '/')
      std::abort();
    if (device.kind == DeviceKind::Command && device.command.empty()) std::abort();
  }
  return 0;
}
