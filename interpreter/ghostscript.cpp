#include "interpreter/ghostscript.h"

#include <utility>

#include "interpreter/ghostscript_files.h"
#include "interpreter/interpreter.h"
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
  wall.programs = IsScript(request.program) ? WallPrograms::Any : WallPrograms::One;
  wall.paths = GhostscriptFiles(request.program);
  wall.paths.insert(wall.paths.end(), request.files.begin(), request.files.end());
  return wall;
}

}  // namespace

std::string FindGhostscript() { return os::FindProgram(ProgramName); }

Expected<GuardedProcess> StartGhostscript(const GhostscriptRequest& request, Guardian& guardian) {
  ProcessRequest process;
  process.executable = request.program;
  process.arguments = Arguments(request);
  process.environment = Environment(request.temporary);
  process.directory = request.directory;
  process.descriptors = request.descriptors;
  process.wall = WallOf(request);
  return GuardedProcess::Start(process, guardian);
}

}  // namespace rastrel::interpreter
