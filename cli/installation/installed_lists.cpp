#include "cli/installation/installed_lists.h"

#include "cli/console/json_line.h"
#include "cli/console/options.h"
#include "cli/console/standard_streams.h"
#include "cli/installation/installation.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"

namespace rastrel::cli {

ExitStatus ListPrintersCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  for (const devices::Device& device : OrEnd(ExitStatus::NotInstalled, ReadPrinters())) {
    const bool isDefault = device.printer == DefaultPrinter;
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("printer");
      line.Add("text", device.printer).Add("description", DescribeDevice(device));
      line.AddFlag("default", isDefault).Write();
    } else {
      WriteOut(device.printer + "\t" + DescribeDevice(device) + (isDefault ? " (default)" : "") +
               "\n");
    }
  }
  return ExitStatus::Done;
}

ExitStatus ListModesCommand(const Invocation& invocation) {
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  for (const PrintMode& mode : ListModes()) {
    const std::string name = mode.folder + "/" + mode.name;
    const bool isDefault = name == DefaultMode;
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("mode");
      line.Add("text", name).AddIfAny("title", mode.title);
      line.AddIfAny("description", mode.description).AddFlag("default", isDefault).Write();
    } else {
      const std::string& description = mode.description.empty() ? mode.title : mode.description;
      WriteOut(name + "\t" + description + (isDefault ? " (default)" : "") + "\n");
    }
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
