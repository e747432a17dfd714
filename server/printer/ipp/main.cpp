// rastrel-printer: the printers of the network, which bring documents into the queue of the data
// root.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/tree.h"
#include "server/printer/ipp/network_printer.h"
#include "server/printer/ipp/whole_documents.h"
#include "server/run/device_names.h"
#include "server/run/helper_program.h"
#include "server/settings/server_settings.h"

namespace rastrel::server {
namespace {

constexpr std::int64_t Megabyte = 1'000'000;
constexpr std::int64_t DocumentLimit = 1
                                       << 30;  // with a smaller limit of jobs, which is held later

// The signals that end the process are taken by one thread, which writes the record first: jobs
// that are under way are found again by it.
void EndOnSignals(NetworkPrinter& printer, const sigset_t& signals) {
  std::thread([&printer, signals] {
    int signal = 0;
    ::sigwait(&signals, &signal);
    printer.Save();
    ::_exit(EXIT_SUCCESS);
  }).detach();
}

// The library writes a document as it comes, unpacked, and only then it is looked at. A few
// megabytes that unpack to more than any job may have end at this size, and their job with them. No
// file that this process writes for itself is as large.
void LimitDocuments(std::int64_t jobLimit) {
  if (jobLimit == 0) return;
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  rlimit limit{};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0) return;
  limit.rlim_cur =
      std::min<rlim_t>(limit.rlim_max, static_cast<rlim_t>(std::max(jobLimit + 1, DocumentLimit)));
  static_cast<void>(::setrlimit(RLIMIT_FSIZE, &limit));
}

Expected<void> Serve(const sigset_t& signals) {
  const std::string root = os::DataRoot();
  const auto settings = SettingsOf(root);
  if (!settings) return settings.Error();
  const std::string devicesFile = root + "/devices.txt";
  const auto devices = DeviceNames(devicesFile, *settings);
  if (!devices) return devices.Error();
  if (devices->empty()) return FailureOf("no device is set up in server.toml or " + devicesFile);
  const auto queue = JobQueue::Open(root);
  if (!queue) return queue.Error();
  const std::string directory = root + "/server/printer";
  const std::string spool = directory + "/spool";
  if (auto made = os::MakePath(os::FromNative(spool), os::Access::Private); !made) return made;

  if (!SeesCutDocuments()) return FailureOf("the print system's library has no httpRead2");
  LimitDocuments(settings->jobMegabytes * Megabyte);
  ShopPrinter shop(**queue, spool, settings->jobMegabytes * Megabyte);
  NetworkPrinter printer(shop, settings->printer, *devices, OfferedModes(root), directory);
  EndOnSignals(printer, signals);
  return printer.Run();
}

}  // namespace
}  // namespace rastrel::server

int main(int count, char** arguments) {
  return rastrel::server::RunHelperProgram(count, arguments, "rastrel-printer",
                                           rastrel::server::Serve);
}
