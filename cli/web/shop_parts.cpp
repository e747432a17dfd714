#include "cli/web/shop_parts.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/installation/installation.h"
#include "cli/installation/print_modes.h"
#include "cli/printing/page_ranges.h"
#include "cli/server/child_run.h"
#include "cli/server/job_options.h"
#include "cli/server/job_table.h"
#include "cli/server/merged_pages.h"
#include "cli/server/queued_input.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process_limits.h"
#include "rastrel/platform/standalone/data_root.h"
#include "server/run/device_names.h"

namespace rastrel::cli {
namespace {

// The file's own name is hidden and says its sender nothing.
Expected<void> CheckJob(const server::JobRequest& request) {
  server::Job job;
  job.work = request.work;
  job.options = request.options;
  job.file = request.path;
  try {
    CheckPrintOptions(InvocationOf(job));
    // Whether table and template fit is known when the job runs.
    if (job.work == server::JobWork::Merge) return CheckMergeInput(MergeFilesOf(job).merged);
  } catch (const CommandError& error) {
    return FailureOf(error.what(), FailureCode::BadInput);
  }
  if (!CheckQueuedInput(request.path))
    return FailureOf(
        "the file is neither PostScript (\"%!\" at its start), nor EPS, PDF, PNG or JPEG",
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
  for (const PrintMode& mode : ListModes().modes) names.push_back(mode.folder + "/" + mode.name);
  return names;
}

// Of a plate that is drawn: far more than any needs. Placed files are drawn within walls of their
// own.
constexpr os::ProcessLimits MergeLimits{
    .memoryBytes = std::uint64_t{4} << 30U, .processorSeconds = 30, .fileBytes = 256'000'000};

Expected<server::web::MergeRun> RunMerge(const std::vector<std::string>& arguments,
                                         std::chrono::milliseconds limit) {
  std::vector<std::string> all{"rastrel-document"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  auto run = RunLimited("rastrel-document", all, os::Deadline::After(limit), MergeLimits);
  if (!run) return run.Error();
  constexpr int OfSignals = 128;
  const int status = run->state.byItself ? run->state.status : OfSignals + run->state.status;
  return server::web::MergeRun{status, std::move(run->output)};
}

}  // namespace

server::web::Shop ShopOf(server::JobQueue& queue, const server::ServerSettings& settings) {
  return {.queue = queue,
          .dataRoot = os::DataRoot(),
          .pageFiles = standalone::FindResources().files + "/web",
          .settings = settings,
          .devices = [settings] { return server::DeviceNames(DevicesFile(), settings); },
          .check = CheckJob,
          .pagesOf = PagesOf,
          .modes = Modes,
          .tableHead = JobTableHead,
          .tableRow = JobTableRow,
          .removePages = RemoveKeptPages,
          .runMerge = RunMerge,
          .spool = SpoolDirectory()};
}

}  // namespace rastrel::cli
