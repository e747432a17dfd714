#include "cli/web/shop_parts.h"

#include <algorithm>
#include <string>
#include <vector>

#include "children/devices/devices.h"
#include "cli/console/exit_status.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/print_modes.h"
#include "cli/printing/page_ranges.h"
#include "cli/server/job_options.h"
#include "cli/server/job_table.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

constexpr std::uint64_t DevicesLimit = 262144;

// Names of the settings' devices, then those of devices.txt but for the one that takes every name.
Expected<std::vector<std::string>> DevicesOf(const server::ServerSettings& settings) {
  std::vector<std::string> names;
  for (const server::DeviceSettings& device : settings.devices) names.push_back(device.name);
  const std::string path = DevicesFile();
  if (!os::Exists(os::FromNative(path))) return names;
  const auto text = os::ReadWholeFile(os::FromNative(path), DevicesLimit);
  if (!text) return FailureAt(path, text.Error());
  const auto sections = devices::ReadDevices(*text);
  if (!sections) return FailureAt(path, sections.Error());
  for (const devices::Device& section : *sections)
    if (section.printer != "*" && std::ranges::find(names, section.printer) == names.end())
      names.push_back(section.printer);
  return names;
}

// The file's own name is hidden and says its sender nothing.
Expected<void> CheckJob(const server::JobRequest& request) {
  server::Job job;
  job.options = request.options;
  try {
    CheckPrintOptions(InvocationOf(job));
  } catch (const CommandError& error) {
    return FailureOf(error.what(), FailureCode::BadInput);
  }
  if (!InspectInput(request.path))
    return FailureOf("the file is neither PostScript (\"%!\" at its start), nor EPS, nor PDF",
                     FailureCode::BadInput);
  return {};
}

Expected<std::vector<int>> PagesOf(const std::string& text) {
  const auto positions = ParsePages(text);
  if (!positions) return positions.Error();
  std::vector<int> pages;
  for (const std::int32_t position : *positions) pages.push_back(position + 1);
  return pages;
}

std::vector<std::string> Modes() {
  std::vector<std::string> names;
  for (const PrintMode& mode : ListModes()) names.push_back(mode.folder + "/" + mode.name);
  return names;
}

}  // namespace

server::web::Shop ShopOf(server::JobQueue& queue, const server::ServerSettings& settings) {
  return {.queue = queue,
          .dataRoot = os::DataRoot(),
          .pageFiles = standalone::FindResources().files + "/web",
          .settings = settings,
          .devices = [settings] { return DevicesOf(settings); },
          .check = CheckJob,
          .pagesOf = PagesOf,
          .modes = Modes,
          .tableHead = JobTableHead,
          .tableRow = JobTableRow,
          .removePages = RemoveKeptPages,
          .spool = SpoolDirectory()};
}

}  // namespace rastrel::cli
