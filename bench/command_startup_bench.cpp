// How long the command takes from its start to its end when there is nothing to do, against the
// smallest program that there is.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace {

using namespace rastrel;

constexpr int Rounds = 400;

// Nanoseconds from before the start to after the end; 0 if it does not end well.
std::int64_t TimeOf(const os::SpawnRequest& request) {
  const std::int64_t begin = os::MonotonicNanoseconds();
  const auto child = os::Spawn(request);
  if (!child) return 0;
  const os::FileDescriptor process(child->process);
  const HANDLE handle = process.Get();
  if (os::WaitForAny(std::span(&handle, 1)) != os::WaitSignaledBase) return 0;
  const auto state = os::TakeExitState(handle);
  if (!state || !state->byItself || state->status != 0) return 0;
  return os::MonotonicNanoseconds() - begin;
}

os::SpawnRequest RequestOf(const std::string& program, std::vector<std::string> arguments,
                           HANDLE nothing) {
  os::SpawnRequest request;
  request.executable = program;
  request.arguments = std::move(arguments);
  request.environment = os::EnvironmentEntries();
  request.standardOutput = nothing;
  return request;
}

double MedianMilliseconds(std::vector<std::int64_t>& times) {
  std::ranges::sort(times);
  return static_cast<double>(times[times.size() / 2]) / 1e6;
}

}  // namespace

int main() {
  // The build tree's bin/ beside this program's own folder.
  const std::string own = os::ExecutablePath();
  const std::string tree = own.substr(0, own.rfind('/', own.rfind('/') - 1));
  const auto nothing = os::OpenForWriting(L"/dev/null");
  if (!nothing) return 1;
  const auto command = RequestOf(tree + "/bin/rastrel", {"rastrel", "--version"}, nothing->Get());
  const auto smallest = RequestOf("/bin/true", {"true"}, nothing->Get());
  std::vector<std::int64_t> ours;
  std::vector<std::int64_t> peers;
  // In turns, so that what else the machine does falls on both.
  for (int round = 0; round < Rounds; ++round) {
    ours.push_back(TimeOf(command));
    peers.push_back(TimeOf(smallest));
    if (ours.back() == 0 || peers.back() == 0) {
      std::fputs("the command or `true` does not run\n", stderr);
      return 1;
    }
  }
  const double our = MedianMilliseconds(ours);
  const double peer = MedianMilliseconds(peers);
  std::printf("bench\tstart-up of the command\t%.3f\tms\ttrue\t%.3f\t%.2f\t-\n", our, peer,
              our / peer);
  return 0;
}
