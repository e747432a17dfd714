#include "cli/listings.h"

#include "cli/installation.h"
#include "cli/json_line.h"
#include "cli/options.h"
#include "cli/print_modes.h"
#include "cli/printers.h"
#include "cli/standard_streams.h"

namespace rastrel::cli {

ExitStatus ListPrintersCommand(const Invocation& invocation) {
  LayOutQuietly();
  for (const devices::Device& device : ReadPrinters()) {
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
  LayOutQuietly();
  for (const PrintMode& mode : ListModes()) {
    const std::string name = mode.folder + "/" + mode.name;
    const bool isDefault = name == DefaultMode;
    if (invocation.Has(OptionId::Json)) {
      JsonLine line("mode");
      line.Add("text", name).AddIfAny("title", mode.title);
      line.AddIfAny("description", mode.description).AddFlag("default", isDefault).Write();
    } else {
      const std::string& words = mode.description.empty() ? mode.title : mode.description;
      WriteOut(name + "\t" + words + (isDefault ? " (default)" : "") + "\n");
    }
  }
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
