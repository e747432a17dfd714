#include "cli/installation/installed_lists.h"

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {

ExitStatus ListPrintersCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  if (!os::Exists(os::FromNative(DevicesFile()))) OrEnd(ExitStatus::NotInstalled, CheckLayout());
  for (const devices::Device& device : OrEnd(ExitStatus::NotInstalled, ReadPrinters())) {
    const bool isDefault = device.printer == DefaultPrinter;
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("printer");
      line.Add("text", device.printer).Add("description", DescribeDevice(device));
      line.AddFlag("default", isDefault).Write();
    } else {
      WriteOutRow({device.printer, DescribeDevice(device) + (isDefault ? " (default)" : "")});
    }
  }
  return ExitStatus::Done;
}

ExitStatus ListModesCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const auto [modes, read] = ListModes();
  if (modes.empty() && read) OrEnd(ExitStatus::NotInstalled, CheckLayout());
  for (const PrintMode& mode : modes) {
    const std::string name = mode.folder + "/" + mode.name;
    const bool isDefault = name == DefaultMode;
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("mode");
      line.Add("text", name).AddIfAny("title", mode.title);
      line.AddIfAny("description", mode.description).AddFlag("default", isDefault).Write();
    } else {
      const std::string& description = mode.description.empty() ? mode.title : mode.description;
      WriteOutRow({name, description + (isDefault ? " (default)" : "")});
    }
  }
  OrEnd(ExitStatus::NotInstalled, read);
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
