#include "interpreter/warm_start.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <utility>

#include "interpreter/ghostscript_files.h"
#include "interpreter/interpreter.h"
#include "interpreter/signal_block.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/trusted_file.h"

namespace rastrel::interpreter {
namespace {

constexpr const char* MachinesProgram = "/usr/bin/gs";
constexpr const char* WarmProgram = "/rastrel-warm";
constexpr std::string_view DeviceOption = "-sDEVICE=";

// Devices that write nothing when they are opened. One that does (pdfwrite) would put the time and
// the number of the warm interpreter's start into every job's file.
constexpr std::array<std::string_view, 6> Devices{"bbox",   "ppmraw",  "pgmraw",
                                                  "png16m", "tiffsep", "nullpage"};

bool IsSwitchedOff() { return os::EnvironmentValue("RASTREL_WARM") == "0"; }

std::vector<std::string>::const_iterator ScriptOf(const std::vector<std::string>& arguments) {
  return std::ranges::find_if(
      arguments, [](const std::string& argument) { return argument == "-f" || argument == "-c"; });
}

bool IsWarmDevice(const std::vector<std::string>& arguments) {
  const auto device = std::ranges::find_if(
      arguments, [](const std::string& argument) { return argument.starts_with(DeviceOption); });
  if (device == arguments.end()) return false;
  const std::string_view name = std::string_view(*device).substr(DeviceOption.size());
  return std::ranges::find(Devices, name) != Devices.end();
}

// The process that a pidfd leads to, by its number here; 0 if that can't be had. A number in a
// message might be one of another namespace.
pid_t ProcessOf(int descriptor) {
  std::ifstream info("/proc/self/fdinfo/" + std::to_string(descriptor));
  std::string key;
  while (info >> key) {
    if (key == "Pid:") {
      pid_t process = 0;
      return info >> process && process > 1 ? process : 0;
    }
    info.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return 0;
}

// The job, with the files that travel beside it. Nothing where a wall's file is no descriptor of
// the job's.
std::optional<WarmJob> JobOf(const ProcessRequest& request, std::string identity,
                             std::vector<int>& files) {
  WarmJob job;
  job.identity = std::move(identity);
  job.script.assign(ScriptOf(request.arguments), request.arguments.end());
  job.directory = request.directory;
  for (const int descriptor : request.descriptors) {
    job.descriptors.push_back(descriptor < 0 ? -1 : static_cast<int>(files.size()));
    if (descriptor >= 0) files.push_back(descriptor);
  }
  job.fileBytes = request.wall.fileBytes;
  job.processorSeconds = request.wall.processorSeconds;
  job.memoryBytes = request.wall.memoryBytes;
  job.paths = request.wall.paths;
  for (WallPath& path : job.paths) {
    if (path.descriptor < 0) continue;
    const auto place = std::ranges::find(request.descriptors, path.descriptor);
    if (place == request.descriptors.end()) return std::nullopt;
    path.descriptor = static_cast<int>(place - request.descriptors.begin());
  }
  return job;
}

// Hands the job over and has its process under guard before it may begin. Nothing where any step
// fails: the connection's end ends a process that waits.
std::optional<GuardedProcess> HandOver(os::FileDescriptor connection, const WarmJob& job,
                                       const std::vector<int>& files, Guardian& guardian) {
  if (!SendWarm(connection.Get(), FormatWarmJob(job), files)) return std::nullopt;
  auto received = ReceiveWarm(connection.Get());
  if (!received) return std::nullopt;
  const auto reply = WarmReplyOf(*received);
  if (!reply || reply->news != WarmNews::Ready || received->files.size() != 2) return std::nullopt;
  const pid_t process = ProcessOf(received->files.front().Get());
  if (process == 0 || !guardian.GuardGroup(process)) return std::nullopt;
  if (!SendWarm(connection.Get(), WarmReply{WarmNews::Ready, 0})) {
    static_cast<void>(guardian.ReleaseGroup(process));
    return std::nullopt;
  }
  return GuardedProcess::OfWarm(process, std::move(received->files.front()), std::move(connection),
                                std::move(received->files.back()), guardian);
}

// In a process forked from any: system calls only.
[[noreturn]] void BecomeWarm(const char* program, char* const* arguments,
                             char* const* environment) noexcept {
  setsid();
  const pid_t process = fork();
  if (process != 0) _exit(process < 0 ? 1 : 0);
  for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const int nothing = open("/dev/null", O_RDWR);
  for (int stream = 0; stream < 3; ++stream) dup2(nothing, stream);
  close_range(3, ~0U, 0);
  if (chdir("/") != 0) _exit(1);
  execve(program, arguments, environment);
  _exit(127);
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

std::optional<WarmOptions> WarmOptionsOf(const ProcessRequest& request) {
  const auto script = ScriptOf(request.arguments);
  if (script == request.arguments.end() || !IsWarmDevice(request.arguments)) return std::nullopt;
  // The RIP's prolog closes systemdict again, which a warm interpreter would have to leave open.
  if (std::find(request.arguments.begin(), script, "-dWRITESYSTEMDICT") != script) {
    return std::nullopt;
  }
  // A page of one file's own, with a resolution of its own perhaps: no other job would have the
  // same options.
  if (std::any_of(request.arguments.begin(), script, [](const std::string& argument) {
        return argument.starts_with("-dDEVICEWIDTHPOINTS=");
      })) {
    return std::nullopt;
  }
  std::error_code error;
  if (std::filesystem::canonical(request.executable, error) != MachinesProgram ||
      IsScript(MachinesProgram)) {
    return std::nullopt;
  }
  // Its temporary files must lie at a name that is the same for every job.
  const bool fixed = std::ranges::any_of(request.environment, [](const std::string& entry) {
    return entry.starts_with("TMPDIR=/dev/fd/");
  });
  if (!fixed) return std::nullopt;
  return WarmOptions{MachinesProgram, {request.arguments.begin(), script}, request.environment};
}

std::optional<GuardedProcess> StartWarm(const ProcessRequest& request, Guardian& guardian) {
  if (IsSwitchedOff() || request.directory.empty()) return std::nullopt;
  const std::string directory = WarmPlace::Path();
  const auto place = WarmPlace::Open(directory);
  if (!place) return std::nullopt;
  const auto options = WarmOptionsOf(request);
  if (!options) return std::nullopt;
  std::string identity = WarmIdentity(*options);
  const std::string name = WarmName(identity);
  auto connection = place->Connect(name);
  if (connection) {
    std::vector<int> files;
    const auto job = JobOf(request, std::move(identity), files);
    return job ? HandOver(std::move(*connection), *job, files, guardian) : std::nullopt;
  }
  // The job goes on by an exec, whatever becomes of this.
  if (!place->IsHeld(name) && place->Wish(name)) {
    static_cast<void>(LaunchWarm(directory, *options));
  }
  return std::nullopt;
}

Expected<void> LaunchWarm(const std::string& directory, const WarmOptions& options,
                          unsigned restSeconds, unsigned jobs) {
  const std::string program = directory + WarmProgram;
  if (const auto trusted = os::CheckTrusted(program, os::DataRoot()); !trusted) return trusted;
  std::vector<std::string> arguments{program, directory, std::to_string(restSeconds),
                                     std::to_string(jobs), options.program};
  arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
  const std::vector<char*> argumentPointers = Pointers(arguments);
  const std::vector<char*> environmentPointers = Pointers(options.environment);
  pid_t process = 0;
  {
    const SignalBlock blocked;
    process = os::Calls().fork();
    if (process == 0) {
      BecomeWarm(program.c_str(), argumentPointers.data(), environmentPointers.data());
    }
  }
  if (process < 0) return Failure{"fork", program, errno};
  int status = 0;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return {};
}

WarmState StateOfWarm() {
  if (IsSwitchedOff()) return WarmState::Off;
  std::error_code error;
  if (std::filesystem::canonical(FindGhostscript(), error) != MachinesProgram) {
    return WarmState::NoLibrary;
  }
  const std::string directory = WarmPlace::Path();
  if (!WarmPlace::Open(directory)) return WarmState::Closed;
  return os::IsProgram(directory + WarmProgram) ? WarmState::Ready : WarmState::NoProgram;
}

}  // namespace rastrel::interpreter
