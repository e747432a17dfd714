#include "interpreter/ghostscript.h"

#include <utility>

#include "interpreter/ghostscript_files.h"
#include "interpreter/interpreter.h"
#include "interpreter/warm_start.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/program_search.h"

namespace rastrel::interpreter {
namespace {

constexpr const char* ProgramName = "gs";

// Of address space, for the program, its libraries, and the fonts' caches that it maps.
constexpr std::uint64_t ProgramBytes = std::uint64_t{1} << 30;

// Of address space, for the stack and the heap that the C library reserves for each further thread.
constexpr std::uint64_t ThreadBytes = std::uint64_t{160} << 20;

std::vector<std::string> Arguments(const GhostscriptRequest& request) {
  std::vector<std::string> arguments{
      ProgramName, "-q",      "-dBATCH",
      "-dNOPAUSE", "-dSAFER", "-K" + std::to_string(request.limits.memoryKibibytes)};
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

WallRequest WallOf(const GhostscriptRequest& request) {
  WallRequest wall;
  wall.fileBytes = request.limits.fileBytes;
  wall.processorSeconds = request.limits.processorSeconds;
  wall.memoryBytes = request.limits.memoryKibibytes * 1024 + ProgramBytes +
                     (request.limits.threads > 1 ? request.limits.threads * ThreadBytes : 0);
  wall.confined = true;
  wall.programs = WallPrograms::One;
  wall.paths = request.files;
  return wall;
}

}  // namespace

std::string FindGhostscript() { return os::FindProgram(ProgramName); }

ProcessRequest ProcessOf(const GhostscriptRequest& request) {
  ProcessRequest process;
  process.executable = request.program;
  process.arguments = Arguments(request);
  process.environment = Environment(request.temporary);
  process.directory = request.directory;
  process.descriptors = request.descriptors;
  process.wall = WallOf(request);
  return process;
}

Expected<GuardedProcess> StartGhostscript(const GhostscriptRequest& request, Guardian& guardian) {
  ProcessRequest process = ProcessOf(request);
  if (request.isSmall) {
    if (auto started = StartWarm(process, guardian)) return std::move(*started);
  }
  if (IsScript(request.program)) process.wall.programs = WallPrograms::Any;
  std::vector<WallPath> own = GhostscriptFiles(request.program);
  process.wall.paths.insert(process.wall.paths.begin(), own.begin(), own.end());
  return GuardedProcess::Start(process, guardian);
}

}  // namespace rastrel::interpreter
