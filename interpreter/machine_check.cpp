#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "interpreter/interpreter.h"
#include "interpreter/settings.h"
#include "interpreter/short_run.h"

namespace rastrel::interpreter {
namespace {

constexpr std::chrono::seconds TimeLimit{20};
constexpr std::size_t OutputLimit = 4096;

// The output of a run that does next to nothing.
Expected<std::string> OutputOf(const std::vector<std::string>& arguments, TaskPlace& place) {
  ShortRun run;
  run.program = FindGhostscript();
  run.arguments = arguments;
  run.time = TimeLimit;
  run.outputLimit = OutputLimit;
  run.memoryKibibytes = Settings().memoryMebibytes * 1024;
  run.workBytes = std::uint64_t{100} << 20;
  run.workFiles = WorkFiles;
  auto ran = RunToEnd(run, place);
  if (!ran) return ran.Error();
  if (auto reason = ReasonOfEnd(*ran); !reason.empty()) return FailureOf(std::move(reason));
  return std::move(ran->output);
}

}  // namespace

Expected<std::string> TryGhostscript() {
  auto place = TaskPlace::Make("rastrel-check-");
  if (!place) return place.Error();
  auto version = OutputOf({"--version"}, *place);
  if (!version) return version.Error();
  // This one reads the resources and a font, so it fails where the walls leave these out.
  const auto started = OutputOf(
      {"-sstdout=%stderr", "-sDEVICE=nullpage", "-c", "/Helvetica findfont pop quit"}, *place);
  if (!started) return started.Error();
  return PlainLine(version->substr(0, version->find_first_of("\r\n")));
}

}  // namespace rastrel::interpreter
