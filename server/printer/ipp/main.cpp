// rastrel-printer: the printers of the network, which bring documents into the queue of the data
// root. `rastrel serve` starts it and starts it again. It ends with its starter.

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "children/devices/devices.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/reaper.h"
#include "rastrel/platform/os/tree.h"
#include "server/printer/ipp/network_printer.h"
#include "server/printer/ipp/whole_documents.h"
#include "server/settings/server_settings.h"

namespace rastrel::server {
namespace {

constexpr std::uint64_t DevicesLimit = 262144;
constexpr std::int64_t Megabyte = 1'000'000;
constexpr std::int64_t DocumentLimit = 1
                                       << 30;  // with a smaller limit of jobs, which is held later

// Names of the settings' devices, then those of devices.txt but for the one that takes every name.
Expected<std::vector<std::string>> DevicesOf(const std::string& root,
                                             const ServerSettings& settings) {
  std::vector<std::string> names;
  for (const DeviceSettings& device : settings.devices) names.push_back(device.name);
  const std::string path = root + "/devices.txt";
  const auto text = os::ReadWholeFile(os::FromNative(path), DevicesLimit);
  if (!text) return names.empty() ? Expected<std::vector<std::string>>(text.Error()) : names;
  const auto sections = devices::ReadDevices(*text);
  if (!sections) return FailureAt(path, sections.Error());
  for (const devices::Device& section : *sections)
    if (section.printer != "*" && std::ranges::find(names, section.printer) == names.end())
      names.push_back(section.printer);
  return names;
}

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

Expected<void> Serve() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGTERM);
  ::sigaddset(&signals, SIGINT);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(::umask(077));

  const std::string root = os::DataRoot();
  const auto settings = SettingsOf(root);
  if (!settings) return settings.Error();
  const auto devices = DevicesOf(root, *settings);
  if (!devices) return devices.Error();
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
  // With a starter's number it ends with it; by hand it has none.
  if (count == 2) {
    const auto starter = static_cast<std::uint32_t>(std::strtoul(arguments[1], nullptr, 10));
    if (!rastrel::os::EndWithStarter(starter)) return EXIT_FAILURE;
  }
  const auto served = rastrel::server::Serve();
  if (served) return EXIT_SUCCESS;
  rastrel::os::WriteToStandardError("rastrel-printer: " + rastrel::Describe(served.Error()) + "\n");
  return EXIT_FAILURE;
}
