#include "cli/server/serve_command.h"

#include <array>
#include <memory>
#include <string>

#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "cli/installation/installation.h"
#include "cli/server/browser.h"
#include "cli/server/open_queue.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/signals.h"
#include "rastrel/platform/os/wait.h"
#include "server/folders/folder_watch.h"
#include "server/printer/printer_service.h"
#include "server/queue/server_lock.h"
#include "server/run/scheduler.h"
#include "server/settings/server_settings.h"

namespace rastrel::cli {

namespace {

server::WorkerProgram Workers() {
  return {.executable = os::ExecutablePath(),
          .interpret = InterpretingWorker,
          .deliver = DeliveringWorker,
          .removePages = RemoveKeptPages,
          .check = []() -> Expected<void> {
            const auto settings = server::SettingsOf(os::DataRoot());
            return settings ? Expected<void>() : settings.Error();
          }};
}

// A program beside this one, unless the settings turn it off.
std::unique_ptr<server::PrinterService> StartedProgram(bool on, const char* program,
                                                       const char* name) {
  if (!on) return nullptr;
  // It offers the devices and the print modes, which a new data root gets at first use.
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  const std::string own = os::ExecutablePath();
  auto service = std::make_unique<server::PrinterService>(
      own.substr(0, own.rfind('/') + 1) + program,
      [](const std::string& line) { WriteErrorLine("rastrel: " + line); }, name);
  OrEnd(ExitStatus::JobFailed, service->Start());
  return service;
}

}  // namespace

ExitStatus ServeCommand(const Invocation& invocation) {
  const HANDLE stop = OrEnd(ExitStatus::JobFailed, os::CreateSemaphoreHandle(0));
  const auto signals =
      OrEnd(ExitStatus::JobFailed,
            TakeStopSignals([stop](int) { static_cast<void>(os::ReleaseSemaphoreHandle(stop)); }));
  const auto queue = OpenJobQueue();
  const auto lock = OrEnd(ExitStatus::JobFailed, server::LockServer(os::DataRoot()));
  const auto settings = OrEnd(ExitStatus::WrongUse, server::SettingsOf(os::DataRoot()));
  const bool opens = invocation.Has(OptionId::OpenBrowser);
  if (opens && !settings.web.on)
    throw CommandError(ExitStatus::WrongUse,
                       "there is no page: server.toml has no section [web] that is on");
  // One line for each part; they stop in the other order.
  server::Scheduler scheduler(*queue, settings, Workers());
  OrEnd(ExitStatus::JobFailed, scheduler.Start());
  server::FolderWatch folders(os::DataRoot(), *queue,
                              [](const std::string& line) { WriteErrorLine("rastrel: " + line); });
  OrEnd(ExitStatus::JobFailed, folders.Start());
  const auto printer =
      StartedProgram(settings.printer.on, "rastrel-printer", "the network printer");
  const auto web = StartedProgram(settings.web.on, "rastrel-web", "the HTTP interface");
  WriteErrorLine("rastrel: serving " + os::DataRoot());
  if (opens)
    OpenInBrowser(settings.web, [stop] {
      return os::WaitReadable(std::array{stop}, os::Deadline::After({})) == os::WaitSignaledBase;
    });
  OrEnd(ExitStatus::JobFailed, os::AcquireSemaphoreHandle(stop));
  WriteErrorLine("rastrel: stopping");
  return ExitStatus::Done;
}

}  // namespace rastrel::cli
