#include "cli/server/cut_run.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/input/input_file.h"
#include "cli/server/child_run.h"

namespace rastrel::cli {
namespace {

using enum TicketEnd::Kind;

constexpr std::array TakenOptions{"rules", "box"};

std::vector<std::string> ArgumentsOf(const server::Job& job, const std::string& result) {
  std::vector<std::string> arguments{"rastrel-cutting", "cut", job.file, "--output", result};
  for (const auto& [name, value] : job.options) {
    if (std::ranges::find(TakenOptions, name) == TakenOptions.end())
      throw CommandError(ExitStatus::WrongUse, "a cut has no option '" + name + "'");
    arguments.push_back("--" + name);
    arguments.push_back(value);
  }
  if (!job.options.contains("rules"))
    throw CommandError(ExitStatus::WrongUse, "a cut needs rules: which paths are cut");
  return arguments;
}

TicketEnd EndOf(const ChildRun& run) {
  if (run.state.byItself && run.state.status == 0) return {Done, 0, ""};
  if (!run.state.byItself)
    return {Failed, static_cast<int>(ExitStatus::JobFailed),
            "the cut was ended by signal " + std::to_string(run.state.status)};
  return {Failed, run.state.status, run.lines.empty() ? "the cut failed" : run.lines.back()};
}

}  // namespace

TicketEnd RunCut(server::JobQueue& queue, const server::Job& job, const std::string& directory) {
  const std::string result = directory + "/" + SafeJobName(job.title) + ".hpgl";
  const ChildRun run =
      OrEnd(ExitStatus::JobFailed, RunChild(queue, job, "rastrel-cutting", ArgumentsOf(job, result),
                                            [](const std::string&) { return true; }));
  if (run.end != ChildRun::End::ByItself)
    return {run.end == ChildRun::End::Canceled ? Canceled : Stopped, 0, ""};
  for (const std::string& line : run.lines) static_cast<void>(queue.AddMessage(job.id, line));
  return EndOf(run);
}

}  // namespace rastrel::cli
