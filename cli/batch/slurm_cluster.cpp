#include "cli/batch/slurm_cluster.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <utility>

#include "cli/batch/tool_run.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/program_search.h"

namespace rastrel::cli {
namespace {

// Without a controller the programs try again for about a minute, and say so then.
constexpr std::chrono::seconds CallLimit{120};
constexpr std::chrono::seconds CancelLimit{20};

constexpr std::array<std::string_view, 10> EndStates{
    "BOOT_FAIL", "CANCELLED",     "COMPLETED", "DEADLINE", "FAILED",
    "NODE_FAIL", "OUT_OF_MEMORY", "PREEMPTED", "REVOKED",  "TIMEOUT"};

std::vector<std::string_view> CellsOf(std::string_view row) {
  std::vector<std::string_view> cells;
  for (const std::string_view cell : Split(row, ' '))
    if (!cell.empty()) cells.push_back(cell);
  return cells;
}

std::optional<unsigned> NumberIn(std::string_view text) {
  unsigned number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

// The last line with anything in it, which has the reason.
std::string LastLine(std::string_view text) {
  std::string last;
  for (const std::string_view line : Split(text, '\n'))
    if (line.find_first_not_of(" \t\r") != line.npos) last = line;
  return last;
}

Failure Refused(const std::string& program, const ToolEnd& end) {
  const std::string line = LastLine(end.error);
  return FailureOf("'" + program + "' ended " + (end.byItself ? "with status " : "by signal ") +
                   std::to_string(end.status) + (line.empty() ? "" : ": " + line));
}

}  // namespace

std::map<std::size_t, TaskState> ReadTaskStates(std::string_view rows) {
  std::map<std::size_t, TaskState> states;
  for (const std::string_view row : Split(rows, '\n')) {
    const auto cells = CellsOf(row);
    if (cells.size() != 3) continue;
    const auto number = NumberIn(cells[0]);
    const auto status = NumberIn(cells[2]);
    if (!number || !status) continue;
    TaskState state;
    state.name = cells[1];
    state.isOver = std::ranges::find(EndStates, cells[1]) != EndStates.end();
    // As wait() has it.
    const unsigned signal = *status & 0x7FU;
    state.bySignal = signal != 0;
    state.status = static_cast<int>(state.bySignal ? signal : (*status >> 8U) & 0xFFU);
    states.insert_or_assign(*number, state);
  }
  return states;
}

Expected<SlurmCluster> SlurmCluster::Find(SlurmWishes wishes, std::function<bool()> isStopped) {
  SlurmCluster cluster;
  cluster.m_Wishes = std::move(wishes);
  cluster.m_IsStopped = std::move(isStopped);
  for (const auto& [name, path] :
       {std::pair{"sbatch", &cluster.m_Submit}, std::pair{"squeue", &cluster.m_Queue},
        std::pair{"scancel", &cluster.m_Cancel}}) {
    *path = os::FindProgram(name);
    if (path->empty())
      return FailureOf("there is no program '" + std::string(name) +
                       "' on the path: --on slurm needs the programs of Slurm");
  }
  return cluster;
}

Expected<std::string> SlurmCluster::Submit(const std::string& name, std::size_t count,
                                           const std::string& script,
                                           const std::vector<std::string>& command) const {
  std::string array = "--array=0-" + std::to_string(count - 1);
  if (m_Wishes.atOnce > 0) array += "%" + std::to_string(m_Wishes.atOnce);
  // A task that dies is given out again by the batch, at once; the controller would wait.
  std::vector<std::string> arguments{
      "--parsable",         "--job-name=" + name, array,
      "--ntasks=1",         "--no-requeue",       "--export=ALL",
      "--output=/dev/null", "--error=/dev/null",  "--input=/dev/null"};
  for (const auto& [option, value] :
       {std::pair{"--partition=", &m_Wishes.partition}, std::pair{"--account=", &m_Wishes.account},
        std::pair{"--time=", &m_Wishes.timeLimit}, std::pair{"--licenses=", &m_Wishes.licenses}})
    if (!value->empty()) arguments.push_back(option + *value);
  arguments.push_back(script);
  arguments.insert(arguments.end(), command.begin(), command.end());
  const auto end = RunTool(m_Submit, arguments, CallLimit, m_IsStopped);
  if (!end) return end.Error();
  if (!end->IsDone()) return Refused(m_Submit, *end);
  // "ID" or "ID;CLUSTER".
  const std::string id = end->output.substr(0, end->output.find_first_of(";\n"));
  if (!NumberIn(id)) return FailureOf("'" + m_Submit + "' names no job: '" + id + "'");
  return id;
}

Expected<std::map<std::size_t, TaskState>> SlurmCluster::States(const std::string& id,
                                                                Call call) const {
  const auto end = RunTool(
      m_Queue,
      {"--array", "--noheader", "--states=all", "--jobs=" + id,
       "--Format=ArrayTaskID:.20,State:.20,exit_code:.20"},
      call == Call::UntilStop ? CallLimit : CancelLimit,
      call == Call::UntilStop ? m_IsStopped : [] { return false; });
  if (!end) return end.Error();
  if (end->IsDone()) return ReadTaskStates(end->output);
  if (end->error.find("Invalid job id") != std::string::npos)
    return std::map<std::size_t, TaskState>();
  return Refused(m_Queue, *end);
}

Expected<void> SlurmCluster::Cancel(const std::string& name) const {
  const auto end =
      RunTool(m_Cancel, {"--quiet", "--name=" + name}, CancelLimit, [] { return false; });
  if (!end) return end.Error();
  if (end->IsDone()) return {};
  return Refused(m_Cancel, *end);
}

}  // namespace rastrel::cli
