#include "cli/installation/printers.h"

#include <algorithm>
#include <utility>

#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t LargestFile = std::uint64_t{1} << 20;

const char* FormatWord(devices::FileFormat format) {
  switch (format) {
    case devices::FileFormat::Tiff: return "TIFF";
    case devices::FileFormat::Png: return "PNG";
    case devices::FileFormat::Pdf: return "PDF";
  }
  return "";
}

}  // namespace

Expected<std::vector<devices::Device>> ReadPrinters() {
  const std::string path = DevicesFile();
  const auto text = os::ReadWholeFile(os::FromNative(path), LargestFile);
  if (!text) return FailureOf("the devices file can't be read: " + Describe(text.Error()));
  auto devices = devices::ReadDevices(*text);
  if (!devices)
    return FailureOf("the devices file '" + path + "' has a fault in " + Describe(devices.Error()));
  return std::move(*devices);
}

Expected<void> CheckPrinter(const std::vector<devices::Device>& devices, const std::string& name) {
  if (std::ranges::find(devices, name, &devices::Device::printer) != devices.end()) return {};
  std::string known;
  for (const devices::Device& device : devices)
    known += (known.empty() ? "'" : ", '") + device.printer + "'";
  return FailureOf("there is no printer '" + name + "' in " + DevicesFile() + "; there are " +
                   (known.empty() ? "none" : known));
}

Expected<void> CheckTakesSeveral(const std::vector<devices::Device>& devices,
                                 const std::string& name) {
  if (auto known = CheckPrinter(devices, name); !known) return known;
  const devices::Device& device = *std::ranges::find(devices, name, &devices::Device::printer);
  const std::string printer = "the printer '" + name + "' ";
  if (device.kind == devices::DeviceKind::Command)
    return FailureOf(printer +
                     "gives its pages to a program, which can't take two jobs at once: print to it "
                     "by `rastrel print`, one file after the other");
  if (!device.pattern.BeginsWith(devices::Field::Output))
    return FailureOf(printer +
                     "has a directory of its own, and a batch puts its pages into that of "
                     "-o: its pattern has to begin with {output}");
  if (!device.pattern.Has(devices::Field::Job))
    return FailureOf(printer +
                     "gives the pages of all jobs the same names: its pattern has no {job}");
  return {};
}

std::string DescribeDevice(const devices::Device& device) {
  const std::string format =
      std::string(device.printer == "*" ? "any name that a host uses and no other section bears: "
                                        : "") +
      FormatWord(device.format);
  devices::FieldValues fields;
  fields.output = "{output}";
  if (device.kind == devices::DeviceKind::Command)
    return format + ", given to a program: " +
           (device.command.empty() ? "" : device.command.front().Expand(fields));
  return format + " files" + (device.overwrite ? ", written over those of the same name" : "");
}

}  // namespace rastrel::cli
