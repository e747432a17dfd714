#include "cli/server/open_queue.h"

#include <charconv>
#include <cstdint>

#include "cli/console/exit_status.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr std::int64_t BytesInMegabyte = 1'000'000;

}  // namespace

std::unique_ptr<server::JobQueue> OpenJobQueue() {
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const auto settings = OrEnd(ExitStatus::WrongUse, server::SettingsOf(os::DataRoot()));
  return OrEnd(ExitStatus::NotInstalled,
               server::JobQueue::Open(os::DataRoot(), PolicyOf(settings)));
}

server::QueuePolicy PolicyOf(const server::ServerSettings& settings) {
  return {.quarantineAfter = settings.quarantineAfter,
          .readyJobs = settings.readyJobs,
          .againAfterCutOff = settings.AgainAfterCutOff(),
          .jobBytes = std::int64_t{settings.jobMegabytes} * BytesInMegabyte};
}

server::JobId JobNumber(const std::string& text) {
  server::JobId id = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, id);
  if (read.ec != std::errc() || read.ptr != end || id < 1)
    throw CommandError(ExitStatus::WrongUse,
                       "'" + text + "' is no number of a job; see `rastrel jobs list`");
  return id;
}

}  // namespace rastrel::cli
