#include "cli/server/worker.h"

#include <atomic>
#include <chrono>
#include <functional>

#include "cli/console/stop_signals.h"
#include "cli/installation/installation.h"
#include "cli/printing/spool.h"
#include "cli/printing/spool_repair.h"
#include "cli/server/open_queue.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/reaper.h"
#include "rastrel/platform/os/signals.h"
#include "rastrel/platform/os/wait.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto IdleLimit = 20s;
constexpr auto LookInterval = 1s;

std::atomic<bool> g_StopAsked = false;

using Claim = std::function<Expected<std::optional<server::Job>>(server::JobQueue&)>;
using Work = std::function<Expected<void>(server::JobQueue&, const server::Job&)>;

void Log(const Failure& failure) {
  os::WriteToStandardError("rastrel: " + Describe(failure) + "\n");
}

// Until there is nothing to do for a while. False if the queue fails.
bool RunJobs(server::JobQueue& queue, HANDLE stop, const Claim& claim, const Work& work) {
  auto idle = os::Deadline::After(IdleLimit);
  static_cast<void>(queue.Bell());
  while (!IsStopAsked() && !idle.HasPassed()) {
    queue.RestBell();
    const auto job = claim(queue);
    if (!job) return Log(job.Error()), false;
    if (!*job) {
      const std::vector<HANDLE> handles{stop, queue.Bell()};
      static_cast<void>(os::WaitReadable(handles, os::Deadline::After(LookInterval)));
      continue;
    }
    if (const auto done = work(queue, **job); !done) return Log(done.Error()), false;
    idle = os::Deadline::After(IdleLimit);
  }
  return true;
}

int RunWorker(const Claim& claim, const Work& work) {
  const auto stop = os::CreateSemaphoreHandle(0);
  if (!stop) return Log(stop.Error()), 1;
  const auto signals = TakeStopSignals([handle = *stop](int) {
    g_StopAsked = true;
    static_cast<void>(os::ReleaseSemaphoreHandle(handle));
  });
  if (!signals) return Log(signals.Error()), 1;
  if (const auto bound = os::EndWithStarter(os::StarterProcessId()); !bound)
    return Log(bound.Error()), 1;
  if (const auto root = MakeSureOfDataRoot(); !root) return Log(root.Error()), 1;
  const auto settings = server::SettingsOf(os::DataRoot());
  if (!settings) return Log(settings.Error()), 1;
  const auto queue = server::JobQueue::Open(os::DataRoot(), PolicyOf(*settings));
  if (!queue) return Log(queue.Error()), 1;
  return RunJobs(**queue, *stop, claim, work) ? 0 : 1;
}

}  // namespace

bool IsStopAsked() { return g_StopAsked; }

int RunInterpreter() {
  return RunWorker([](server::JobQueue& queue) { return queue.ClaimToInterpret(); }, InterpretJob);
}

int RunDeliverer(const std::string& device) {
  return RunWorker([&device](server::JobQueue& queue) { return queue.ClaimToDeliver(device); },
                   DeliverJob);
}

void RemoveKeptPages(const std::string& spool) {
  const auto entry = FindSpoolEntry(spool);
  if (!entry) return;
  if (const auto removed = RemoveEntry(*entry); !removed) Log(removed.Error());
}

}  // namespace rastrel::cli
