#include "interpreter/ghostscript.h"

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <cerrno>
#include <utility>

#include "interpreter/interpreter.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/program_search.h"

namespace rastrel::interpreter {
namespace {

constexpr const char* ProgramName = "gs";

std::vector<std::string> Arguments(const GhostscriptRequest& request) {
  std::vector<std::string> arguments{ProgramName, "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER"};
  arguments.insert(arguments.end(), request.arguments.begin(), request.arguments.end());
  return arguments;
}

// Settings of the user's that would change the interpreter's options stay outside; fonts are found
// by the others.
std::vector<std::string> Environment(const std::string& temporary) {
  std::vector<std::string> environment{"TMPDIR=" + temporary, "TEMP=" + temporary, "LC_ALL=C"};
  for (const char* const name : {"PATH", "HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME",
                                 "XDG_CONFIG_HOME", "FONTCONFIG_FILE", "FONTCONFIG_PATH"}) {
    const std::string value = os::EnvironmentValue(name);
    if (!value.empty()) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

Expected<GhostscriptProcess> StartGuarded(const GhostscriptRequest& request, Guardian& guardian) {
  ProcessRequest process;
  process.executable = request.program;
  process.arguments = Arguments(request);
  process.environment = Environment(request.temporary);
  process.directory = request.directory;
  process.descriptors = request.descriptors;
  process.fileSizeLimit = request.fileSizeLimit;
  process.processorLimit = request.processorLimit;
  auto started = GuardedProcess::Start(process, guardian);
  if (!started) return started.Error();
  return GhostscriptProcess(std::move(*started));
}

Expected<GhostscriptProcess> StartSpawned(const GhostscriptRequest& request) {
  const os::FileDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  if (!nothing.IsOpen()) return Failure{"open", "/dev/null", errno};
  std::array<int, 3> streams{-1, -1, -1};
  for (std::size_t i = 0; i < streams.size(); ++i) {
    if (i < request.descriptors.size()) streams[i] = request.descriptors[i];
    if (streams[i] < 0) streams[i] = nothing.Get();
  }
  const auto child = os::Spawn({request.program, Arguments(request), Environment(request.temporary),
                                request.directory, streams[0], streams[1], streams[2]});
  if (!child) return child.Error();
  return GhostscriptProcess(*child);
}

}  // namespace

std::string FindGhostscript() { return os::FindProgram(ProgramName); }

Expected<GhostscriptProcess> StartGhostscript(const GhostscriptRequest& request,
                                              Guardian* guardian) {
  return guardian != nullptr ? StartGuarded(request, *guardian) : StartSpawned(request);
}

GhostscriptProcess::Spawned::~Spawned() {
  if (m_Process.IsOpen() && !m_Ended) static_cast<void>(os::Terminate(m_Process.Get()));
}

Expected<ProcessEnd> GhostscriptProcess::Spawned::End() {
  m_Ended = true;
  const auto state = os::Terminate(m_Process.Get());
  if (!state) return state.Error();
  return ProcessEnd{state->byItself, state->status};
}

int GhostscriptProcess::Descriptor() const {
  return std::visit([](const auto& process) { return process.Descriptor(); }, m_Process);
}

pid_t GhostscriptProcess::Id() const {
  if (const auto* const guarded = std::get_if<GuardedProcess>(&m_Process)) return guarded->Number();
  return std::get<Spawned>(m_Process).Id();
}

void GhostscriptProcess::Kill() {
  if (auto* const guarded = std::get_if<GuardedProcess>(&m_Process)) {
    guarded->Kill();
  } else {
    static_cast<void>(std::get<Spawned>(m_Process).End());
  }
}

Expected<ProcessEnd> GhostscriptProcess::Wait() {
  if (auto* const guarded = std::get_if<GuardedProcess>(&m_Process)) return guarded->Wait();
  pollfd entry{Descriptor(), POLLIN, 0};
  while (poll(&entry, 1, -1) < 0 && errno == EINTR) {
  }
  return std::get<Spawned>(m_Process).End();
}

}  // namespace rastrel::interpreter
