#include "children/corerast/taken_tiff.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "children/devices/devices.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::corerast {
namespace {

constexpr std::uint64_t LargestDevicesFile = 256u << 10;

}  // namespace

interpreter::TakesTiff PrintersThatTakeTiff() {
  const auto text =
      os::ReadWholeFile(os::FromNative(os::DataRoot() + "/devices.txt"), LargestDevicesFile);
  if (!text) return {};
  auto devices = devices::ReadDevices(*text);
  if (!devices) return {};
  return [list = *std::move(devices)](const std::string& printer) {
    const devices::Device* const device = devices::FindDevice(list, printer);
    return device != nullptr && device->kind == devices::DeviceKind::File &&
           device->format == devices::FileFormat::Tiff &&
           device->compression == devices::Compression::None;
  };
}

}  // namespace rastrel::corerast
