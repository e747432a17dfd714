// Jobs through the server's queue against `rastrel print` of each, file by file; jobs for a slow
// device. Whole processes, turn by turn.

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/program.h"
#include "bench/require.h"
#include "bench/running_server.h"
#include "server/queue/job_queue.h"

namespace {

namespace bench = rastrel::bench;
namespace server = rastrel::server;

constexpr const char* Command = RASTREL_BINARY_DIR "/bin/rastrel";
constexpr const char* Mode = "Screen/preview";
constexpr double LimitOfSmallJobs = 0.6;
constexpr double LimitOfSlowDevice = 0.65;

constexpr const char* SmallPage =
    "%!PS\n<< /PageSize [72 72] >> setpagedevice\n0.5 setgray 9 9 54 54 rectfill showpage\n";
constexpr double DeviceMilliseconds = 1000;
constexpr int FirstSteps = 500'000;

/// A page that takes the RIP the longer, the more steps it has.
std::string LongPage(int steps) {
  return "%!PS\n<< /PageSize [72 72] >> setpagedevice\n0 1 " + std::to_string(steps) +
         " { 1000 mod 1000 div setgray 9 9 54 54 rectfill } for showpage\n";
}

constexpr const char* Devices =
    "[Slow]\nkind = command\nformat = png\ncommand = /bin/sleep 1\n"
    "[*]\nkind = file\nformat = tiff\ncompression = none\npattern = {output}/{job}-{page}.tif\n";

/// A page that takes the RIP about as long as the slow device takes, on this machine.
std::string PageForTheDevice(const bench::DataRoot& root) {
  const auto milliseconds = [&root](const std::string& page) {
    const std::string file = root.File("timed.ps", page);
    return bench::Run({Command, "print", file, "--mode", Mode, "--printer", "*", "--output",
                       root.Path("timed")})
        .milliseconds;
  };
  static_cast<void>(milliseconds(SmallPage));  // lays the data root out
  const double without = milliseconds(SmallPage);
  const double steps = milliseconds(LongPage(FirstSteps)) - without;
  return LongPage(static_cast<int>(FirstSteps * (DeviceMilliseconds - without) / steps));
}

/// Waits until as many jobs as that are done.
void AwaitDone(server::JobQueue& queue, std::int64_t jobs) {
  server::JobFilter done;
  done.states = {server::JobState::Done};
  while (queue.Count(done).ValueOr(0) < jobs)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

/// Brings `count` jobs of a file to a device: at once through the queue, and one by one.
void MeasureJobs(const bench::DataRoot& root, server::JobQueue& queue, const std::string& name,
                 const std::string& device, const std::string& file, int count, int rounds,
                 double limit) {
  std::int64_t done = queue.Count({}).ValueOr(0);
  std::vector<std::string> add{Command, "jobs", "add", "--mode", Mode, "--device", device};
  for (int job = 0; job < count; ++job) add.push_back(file);
  const auto ours = [&] {
    static_cast<void>(bench::Run(add));
    AwaitDone(queue, done += count);
  };
  const auto peer = [&] {
    for (int job = 0; job < count; ++job)
      static_cast<void>(bench::Run({Command, "print", file, "--mode", Mode, "--printer", device}));
  };
  const auto clean = [&] { std::filesystem::remove_all(root.Path("output")); };
  bench::Compare({name, "`rastrel print` of each", rounds, limit}, clean, ours, peer);
}

}  // namespace

int main() {
  const bench::DataRoot root;
  const std::string small = root.File("small.ps", SmallPage);
  static_cast<void>(bench::Run({Command, "printers"}));
  root.Write("devices.txt", Devices);
  const std::string slow = root.File("slow.ps", PageForTheDevice(root));
  const auto queue = server::JobQueue::Open(root.Path());
  bench::Require(static_cast<bool>(queue), "the queue can't be opened");
  {
    const bench::RunningServer running;
    MeasureJobs(root, **queue, "200 small jobs through the server", "*", small, 200, 1,
                LimitOfSmallJobs);
    MeasureJobs(root, **queue, "five jobs for a slow device", "Slow", slow, 5, 3,
                LimitOfSlowDevice);
  }
  return 0;
}
