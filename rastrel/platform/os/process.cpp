#include "rastrel/platform/os/process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/reaper.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {
namespace {

constexpr int StandardCount = 3;
constexpr std::uint64_t StatusLimit = std::uint64_t{64} << 10;  // of a file of /proc

class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&m_Attributes);
    sigset_t all;
    sigfillset(&all);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&m_Attributes, &all);
    posix_spawnattr_setsigmask(&m_Attributes, &none);
    posix_spawnattr_setflags(
        &m_Attributes,
        static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSID));
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&m_Attributes); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  [[nodiscard]] const posix_spawnattr_t* Get() const { return &m_Attributes; }

 private:
  posix_spawnattr_t m_Attributes{};
};

class SpawnActions {
 public:
  SpawnActions() { posix_spawn_file_actions_init(&m_Actions); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&m_Actions); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  // These return an error number, ENOMEM at that.
  int ChangeDirectory(const char* path) {
    return posix_spawn_file_actions_addchdir_np(&m_Actions, path);
  }
  int Place(int source, int place) {
    return posix_spawn_file_actions_adddup2(&m_Actions, source, place);
  }
  int OpenNothing(int place) {
    return posix_spawn_file_actions_addopen(&m_Actions, place, "/dev/null", O_RDWR, 0);
  }
  int CloseAllFrom(int first) {
    return posix_spawn_file_actions_addclosefrom_np(&m_Actions, first);
  }
  [[nodiscard]] const posix_spawn_file_actions_t* Get() const { return &m_Actions; }

 private:
  posix_spawn_file_actions_t m_Actions{};
};

// Gives the child its three streams. A source that is itself one of the three but belongs to
// another place is copied out of the way first, since its place may be overwritten before its turn.
int PlaceStreams(SpawnActions& actions, const SpawnRequest& request,
                 std::array<FileDescriptor, StandardCount>& copies) {
  const std::array<HANDLE, StandardCount> wanted = {request.standardInput, request.standardOutput,
                                                    request.standardError};
  std::array<int, StandardCount> sources{};
  for (int place = 0; place < StandardCount; ++place) {
    const auto index = static_cast<std::size_t>(place);
    sources[index] = wanted[index] > 0 ? wanted[index] : place;
    if (sources[index] >= StandardCount || sources[index] == place) continue;
    copies[index].Reset(Calls().duplicate(sources[index], StandardCount));
    if (!copies[index].IsOpen()) return errno;
    sources[index] = copies[index].Get();
  }
  for (int place = 0; place < StandardCount; ++place) {
    const int source = sources[static_cast<std::size_t>(place)];
    // A stream that this process itself lacks is empty for the child, and its number stays taken.
    const bool missing = source == place && ::fcntl(place, F_GETFD) < 0;
    const int error = missing ? actions.OpenNothing(place) : actions.Place(source, place);
    if (error != 0) return error;
  }
  return 0;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// The child changes its directory before it executes, which would change the meaning of a relative
// path.
std::string AbsoluteExecutable(const SpawnRequest& request) {
  if (request.executable.empty() || request.executable.front() == '/' || request.directory.empty())
    return request.executable;
  return CurrentDirectory() + "/" + request.executable;
}

// Returns an error number.
int SpawnProcess(const SpawnRequest& request, const std::string& executable, pid_t& id) {
  SpawnActions actions;
  std::array<FileDescriptor, StandardCount> copies;
  int error = PlaceStreams(actions, request, copies);
  if (error == 0 && !request.directory.empty())
    error = actions.ChangeDirectory(request.directory.c_str());
  if (error == 0) error = actions.CloseAllFrom(StandardCount);
  if (error != 0) return error;
  const SpawnAttributes attributes;
  return Calls().spawn(&id, executable.c_str(), actions.Get(), attributes.Get(),
                       Pointers(request.arguments).data(), Pointers(request.environment).data());
}

// The spawn returns one error number for every failure in the child, so that a bad directory would
// look like a missing program.
Failure SpawnFailure(const SpawnRequest& request, const std::string& executable, int error) {
  struct stat state {};
  if (!request.directory.empty() && ::stat(request.directory.c_str(), &state) != 0)
    return {"chdir", request.directory, error};
  return {"posix_spawn", executable, error};
}

bool WaitFor(idtype_t type, id_t id, siginfo_t& information, int options) {
  while (Calls().waitid(type, id, &information, options) != 0)
    if (errno != EINTR) return false;
  return true;
}

// Ends a child that there is no descriptor for. Its id is sure to be its own while it is not
// reaped.
void EndById(pid_t id) {
  siginfo_t information{};
  const auto child = static_cast<id_t>(id);
  if (!WaitFor(P_PID, child, information, WEXITED | WNOHANG | WNOWAIT)) return;
  ::kill(id, SIGKILL);
  WaitFor(P_PID, child, information, WEXITED);
}

// In the reaper.
Expected<ChildProcess> StartChild(const SpawnRequest& request, const std::string& executable) {
  pid_t id = 0;
  const int error = SpawnProcess(request, executable, id);
  if (error != 0) return SpawnFailure(request, executable, error);

  auto process = TakeDescriptor(Calls().pidfd_open(id, 0), "pidfd_open", executable);
  if (!process) {
    EndById(id);
    return process.Error();
  }
  return ChildProcess{.process = process->Release(), .id = static_cast<std::uint32_t>(id)};
}

}  // namespace

Expected<ChildProcess> Spawn(const SpawnRequest& request) {
  const std::string executable = AbsoluteExecutable(request);
  Expected<ChildProcess> child = StartInReaper([&] { return StartChild(request, executable); });
  if (child || !child.Error().where.empty()) return child;
  Failure failure = child.Error();
  failure.where = executable;
  return failure;
}

Expected<ExitState> TakeExitState(HANDLE process) { return TakeEndFromReaper(process, false); }

Expected<void> SendSignal(HANDLE process, int signal) {
  if (process > 0 && Calls().pidfd_send_signal(process, signal, nullptr, 0) != 0 && errno != ESRCH)
    return Failure{"pidfd_send_signal", "process handle " + std::to_string(process), errno};
  return {};
}

Expected<void> EndWithStarter(std::uint32_t starter) {
  // The reaper between the two ends with the starter.
  if (::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0) return Failure{"prctl", {}, errno};
  if (StarterProcessId() != starter) return Failure{"prctl", {}, ESRCH};
  return {};
}

Expected<ExitState> Terminate(HANDLE process) {
  if (const auto sent = SendSignal(process, SIGKILL); !sent) return sent.Error();
  auto end = TakeEndFromReaper(process, true);
  ReleaseEndedChildren();
  return end;
}

void ReleaseEndedChildren() { JoinEndedReapers(); }

Failure ReplaceProcess(const std::string& executable, const std::vector<std::string>& arguments) {
  std::vector<char*> words;
  words.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  ::execv(executable.c_str(), words.data());
  return {"exec", executable, errno};
}

bool CanOpenProcess(std::uint32_t id) {
  // 0, and a number that is negative as a pid_t, would mean groups of processes.
  if (id == 0 || id > static_cast<std::uint32_t>(INT_MAX)) return false;
  return ::kill(static_cast<pid_t>(id), 0) == 0;
}

std::uint32_t CurrentProcessId() { return static_cast<std::uint32_t>(::getpid()); }

unsigned CurrentUmask() {
  constexpr std::string_view key = "\nUmask:";
  const Expected<std::string> text = ReadWholeFile(L"/proc/self/status", StatusLimit);
  const std::size_t found = text ? text->find(key) : std::string::npos;
  unsigned mask = 077;
  if (found == std::string::npos) return mask;
  const std::size_t digits = text->find_first_not_of(" \t", found + key.size());
  if (digits == std::string::npos) return mask;
  std::from_chars(text->data() + digits, text->data() + text->size(), mask, 8);
  return mask;
}

std::uint32_t CurrentThreadId() { return static_cast<std::uint32_t>(::gettid()); }

std::vector<std::string> EnvironmentEntries() {
  std::vector<std::string> entries;
  for (char** entry = ::environ; entry != nullptr && *entry != nullptr; ++entry)
    entries.emplace_back(*entry);
  return entries;
}

}  // namespace rastrel::os
