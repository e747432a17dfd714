#include "cli/cutting/send_command.h"

#include <string>
#include <utility>

#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/cutting/device_job.h"
#include "cli/cutting/device_options.h"
#include "cli/cutting/device_place.h"
#include "cutting/job/job_file.h"
#include "cutting/output/cut_file.h"
#include "cutting/toml/strict_toml.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

/// Larger files are refused: a plate of a million points has some 20 MB.
constexpr std::size_t LargestFile = std::size_t{512} << 20;

cutting::Device DeviceAt(const std::string& path) {
  return OrEndByCode(ExitStatus::JobFailed, ReadDeviceFile(path));
}

ExitStatus ListDevices(const Invocation& invocation) {
  for (const FoundDevice& found : FoundDevices()) {
    const auto device = ReadDeviceFile(found.path);
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("device");
      line.Add("name", found.name).Add("path", found.path);
      if (device) {
        line.Add("title", device->name)
            .Add("format", device->format)
            .Add("reach", cutting::NameOf(device->reach.by));
      } else {
        line.Add("fault", Describe(device.Error()));
      }
      line.Write();
    } else if (device) {
      WriteOutRow({found.name, device->format, std::string(cutting::NameOf(device->reach.by)),
                   device->name});
    } else {
      WriteOutRow({found.name, "-", "-", Describe(device.Error())});
    }
  }
  return ExitStatus::Done;
}

ExitStatus ShowDevice(const std::string& name) {
  const std::string path = OrEndByCode(ExitStatus::JobFailed, FindDevice(name));
  const auto text = os::ReadWholeFile(os::FromNative(path), cutting::TomlFileLimit);
  if (!text) throw CommandError(ExitStatus::BadInput, Describe(FailureAt(path, text.Error())));
  std::size_t begin = 0;
  while (begin < text->size()) {
    const std::size_t end = std::min(text->find('\n', begin), text->size());
    WriteOutLine(std::string_view(*text).substr(begin, end - begin));
    begin = end + 1;
  }
  return ExitStatus::Done;
}

ExitStatus CheckDevice(const std::string& path, bool json) {
  const cutting::Device device = DeviceAt(path);
  if (json) {
    JsonLine("done").Add("exit", 0).Add("device", device.name).Write();
  } else {
    WriteOutLine(path + ": '" + device.name + "' is sound");
  }
  return ExitStatus::Done;
}

bool IsJobName(std::string_view name) { return name.ends_with(".json"); }

void CheckForm(const cutting::Device& device, const std::string& file) {
  const auto form = cutting::CutFormOfFile(file);
  if (!form || cutting::NameOf(*form) == device.format) return;
  throw CommandError(ExitStatus::BadInput, "'" + file + "' is " +
                                               std::string(cutting::NameOf(*form)) + ", and '" +
                                               device.name + "' takes " + device.format);
}

std::string TextOf(const std::string& file) {
  auto text = os::ReadWholeFile(os::FromNative(file), LargestFile);
  if (!text) throw CommandError(ExitStatus::BadInput, Describe(FailureAt(file, text.Error())));
  return *std::move(text);
}

ExitStatus SendFile(const Invocation& invocation) {
  const std::string& file = invocation.operand;
  if (!invocation.Has(OptionId::CutDevice))
    throw CommandError(ExitStatus::WrongUse, "name the device: --device NAME");
  const std::string path =
      OrEndByCode(ExitStatus::JobFailed, FindDevice(invocation.ValueOr(OptionId::CutDevice, "")));
  const cutting::Device device = DeviceAt(path);
  CheckForm(device, file);
  std::string bytes = TextOf(file);
  const bool isMade = IsJobName(file);
  if (isMade) {
    const auto job = OrEndByCode(ExitStatus::BadInput, cutting::ReadJobFile(bytes, file));
    bytes = OrEndByCode(ExitStatus::JobFailed, FileForDevice(device, job));
  }
  return SendDeviceJob({.device = device,
                        .devicePath = path,
                        .bytes = bytes,
                        .name = file,
                        .file = isMade ? "" : file},
                       invocation);
}

}  // namespace

ExitStatus SendCommand(const Invocation& invocation) {
  const int others = int{invocation.Has(OptionId::ListDevices)} +
                     int{invocation.Has(OptionId::ShowDevice)} +
                     int{invocation.Has(OptionId::CheckDevice)};
  if (others + int{!invocation.operand.empty()} != 1)
    throw CommandError(ExitStatus::WrongUse,
                       "give FILE with --device, or one of --list, --show and --check");
  if (invocation.Has(OptionId::ListDevices)) return ListDevices(invocation);
  if (invocation.Has(OptionId::ShowDevice))
    return ShowDevice(invocation.ValueOr(OptionId::ShowDevice, ""));
  if (invocation.Has(OptionId::CheckDevice))
    return CheckDevice(invocation.ValueOr(OptionId::CheckDevice, ""),
                       invocation.Has(OptionId::Json));
  return SendFile(invocation);
}

}  // namespace rastrel::cli
