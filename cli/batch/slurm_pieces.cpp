#include "cli/batch/slurm_pieces.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "cli/batch/array_cutter.h"
#include "cli/batch/array_plan.h"
#include "cli/batch/array_task.h"
#include "cli/batch/lost_file.h"
#include "cli/console/standard_streams.h"
#include "cli/console/stop_signals.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/signals.h"

namespace rastrel::cli {
namespace {

using Clock = std::chrono::steady_clock;

// How often the record is looked at, and the controller asked.
constexpr std::chrono::milliseconds LookInterval{100};
constexpr std::chrono::seconds AskInterval{1};
// After a task's end its result may take so long to be seen on a shared folder.
constexpr std::chrono::seconds Grace{5};
// The controller may be begun anew meanwhile.
constexpr std::chrono::seconds SilenceLimit{300};
// Tasks that run when the batch is ended have so long to store their results.
constexpr std::chrono::seconds EndLimit{40};

// It holds no name of a file: each argument comes as it is.
constexpr const char* ScriptText = "#!/bin/sh\nexec \"$@\"\n";
constexpr const char* ScriptFile = "/task.sh";
constexpr std::size_t NameBytes = 6;

// A piece of the array that has no result yet.
struct OpenPiece {
  std::size_t task = 0;
  BatchPiece piece;
  std::optional<Clock::time_point> over;  // when its end was first seen
  TaskState end;
};

std::string WhyOf(const TaskState& end) {
  if (end.name.empty()) return "the cluster has forgotten its task";
  std::string why = "its task ended as " + end.name;
  if (end.status != 0)
    why += (end.bySignal ? ", by signal " : ", with status ") + std::to_string(end.status);
  return why;
}

// Ends the work where no machine can do any.
void CheckMachine(const TaskState& end, const BatchRecord& record) {
  if (end.bySignal) return;
  if (end.status == NotSharedStatus)
    throw CommandError(ExitStatus::JobFailed,
                       "a machine of the cluster does not see '" + record.Directory() +
                           "' or the working directory: both must be on a folder that all of its "
                           "machines share under one path");
  if (end.status == ShellCannotRun || end.status == ShellNotFound)
    throw CommandError(ExitStatus::NotInstalled, "a machine of the cluster can't run '" +
                                                     os::ExecutablePath() +
                                                     "': it must be there under the same path");
}

class Arrays {
 public:
  Arrays(const BatchRecord& record, GatheredResults& results, const SlurmCluster& cluster,
         const std::atomic<bool>& isStopped, double seconds)
      : m_Record(record),
        m_Results(results),
        m_Cluster(cluster),
        m_IsStopped(isStopped),
        m_Cutter(results, record.Plan().files.size(), seconds) {}

  void Work() {
    OrEnd(ExitStatus::JobFailed, os::ReplaceFile(os::FromNative(m_Record.Directory() + ScriptFile),
                                                 ScriptText, os::Access::Private));
    while (!m_IsStopped) {
      auto pieces = m_Cutter.Next();
      if (pieces.empty()) return;
      Do(std::move(pieces));
    }
  }

 private:
  void Do(std::vector<BatchPiece> pieces) {
    const std::string name =
        "rastrel-batch-" + OrEnd(ExitStatus::JobFailed, os::RandomDigits(NameBytes));
    const ArrayPlan plan{name, os::CurrentDirectory(), std::move(pieces)};
    OrEnd(ExitStatus::JobFailed, WriteArrayPlan(m_Record, plan));
    m_Open.clear();
    for (std::size_t task = 0; task < plan.pieces.size(); ++task)
      m_Open.push_back({task, plan.pieces[task], {}, {}});
    try {
      const auto id =
          m_Cluster.Submit(name, plan.pieces.size(), m_Record.Directory() + ScriptFile,
                           {os::ExecutablePath(), ArrayTaskWord, m_Record.Results(), name});
      if (!id && !m_IsStopped) throw CommandError(ExitStatus::JobFailed, Describe(id.Error()));
      if (id) Await(*id);
      if (m_IsStopped) OrEnd(ExitStatus::JobFailed, m_Cluster.Cancel(name));
      if (id && m_IsStopped) AwaitEnd(*id);
    } catch (const CommandError&) {
      // The first message counts.
      static_cast<void>(m_Cluster.Cancel(name));
      throw;
    }
    OrEnd(ExitStatus::JobFailed, RemoveArrayPlan(m_Record, name));
  }

  void Await(const std::string& id) {
    m_Answered = m_Asked = Clock::now();
    while (!m_Open.empty() && !m_IsStopped) {
      std::this_thread::sleep_for(LookInterval);
      TakeResults();
      if (m_Open.empty() || Clock::now() - m_Asked < AskInterval) continue;
      Ask(id);
      m_Asked = Clock::now();
    }
  }

  void TakeResults() {
    std::erase_if(m_Open, [this](const OpenPiece& open) { return Take(open); });
  }

  // False if there is nothing yet.
  bool Take(const OpenPiece& open) {
    std::vector<FileResult> results = m_Record.Load(open.piece.first);
    if (results.empty()) return false;
    const std::size_t ended = std::min(results.size(), open.piece.count);
    m_Cutter.Measured(ended, m_Record.SecondsOf(open.piece.first));
    for (std::size_t i = 0; i < ended; ++i)
      m_Results.Add(open.piece.first + i, std::move(results[i]));
    // One that a time limit ended has stored its files so far.
    GiveAgain(open, ended);
    return true;
  }

  void GiveAgain(const OpenPiece& open, std::size_t from) {
    if (m_IsStopped) return;
    for (std::size_t i = from; i < open.piece.count; ++i)
      if (!m_Cutter.Again(open.piece.first + i))
        m_Results.Add(open.piece.first + i,
                      LostFile(m_Record.Plan(), open.piece.first + i, WhyOf(open.end), {}));
  }

  void Ask(const std::string& id) {
    const auto states = m_Cluster.States(id);
    const auto now = Clock::now();
    if (!states) {
      if (!m_IsStopped && now - m_Answered > SilenceLimit)
        throw CommandError(ExitStatus::JobFailed,
                           "the cluster does not answer: " + Describe(states.Error()));
      return;
    }
    m_Answered = now;
    for (OpenPiece& open : m_Open) {
      const auto state = states->find(open.task);
      const bool isOver = state == states->end() || state->second.isOver;
      if (!isOver) {
        open.over.reset();
        continue;
      }
      if (state != states->end()) open.end = state->second;
      CheckMachine(open.end, m_Record);
      if (!open.over) open.over = now;
    }
    std::erase_if(m_Open, [&](const OpenPiece& open) {
      if (!open.over || now - *open.over < Grace) return false;
      if (!Take(open)) GiveAgain(open, 0);
      return true;
    });
  }

  // Takes the results that the tasks store while they are ended.
  void AwaitEnd(const std::string& id) {
    const auto limit = Clock::now() + EndLimit;
    for (bool someRun = true; someRun && Clock::now() < limit;) {
      std::this_thread::sleep_for(LookInterval);
      const auto states = m_Cluster.States(id, SlurmCluster::Call::AfterStop);
      someRun = states && std::ranges::any_of(
                              *states, [](const auto& state) { return !state.second.isOver; });
      TakeResults();
    }
  }

  const BatchRecord& m_Record;
  GatheredResults& m_Results;
  const SlurmCluster& m_Cluster;
  const std::atomic<bool>& m_IsStopped;
  ArrayCutter m_Cutter;
  std::vector<OpenPiece> m_Open;
  Clock::time_point m_Asked;
  Clock::time_point m_Answered;
};

}  // namespace

SlurmPieces::SlurmPieces(SlurmWishes wishes, double seconds)
    : m_IsStopped(std::make_shared<std::atomic<bool>>(false)),
      m_Cluster(OrEnd(ExitStatus::NotInstalled,
                      SlurmCluster::Find(std::move(wishes),
                                         [stopped = m_IsStopped] { return stopped->load(); }))),
      m_Seconds(seconds) {}

ExitStatus SlurmPieces::Run(const BatchRecord& record, GatheredResults& results) {
  const auto signals = OrEnd(ExitStatus::JobFailed,
                             TakeStopSignals([stopped = m_IsStopped](int) { *stopped = true; }));
  Arrays(record, results, m_Cluster, *m_IsStopped, m_Seconds).Work();
  return *m_IsStopped ? ExitStatus::Cancelled : ExitStatus::Done;
}

}  // namespace rastrel::cli
