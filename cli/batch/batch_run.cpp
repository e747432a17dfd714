#include "cli/batch/batch_run.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "cli/batch/earlier_arrays.h"
#include "cli/batch/gathered_results.h"
#include "cli/console/cancelled.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

void WriteSummary(const GatheredResults& results, const BatchTask& task, std::size_t files,
                  std::size_t earlier, bool json) {
  if (json) {
    JsonLine("summary")
        .Add("files", static_cast<std::int64_t>(files))
        .Add("done", static_cast<std::int64_t>(results.Ended() - results.Failed()))
        .Add("failed", static_cast<std::int64_t>(results.Failed()))
        .Add("earlier", static_cast<std::int64_t>(earlier))
        .Write();
    return;
  }
  std::string line = std::to_string(results.Ended() - results.Failed()) + " of " +
                     std::to_string(files) + " " + task.noun + " are done";
  if (results.Failed() > 0) line += ", " + std::to_string(results.Failed()) + " failed";
  if (earlier > 0) line += "; " + std::to_string(earlier) + " of an earlier run";
  WriteErrorLine(line);
}

// A batch that could not begin leaves no record that the next one would have to resume.
ExitStatus RunPieces(PieceRunner& runner, const BatchRecord& record, GatheredResults& results) {
  try {
    return runner.Run(record, results);
  } catch (const CommandError&) {
    // The first message counts.
    if (results.Ended() == 0) static_cast<void>(record.Remove());
    throw;
  }
}

}  // namespace

ExitStatus RunBatch(const Invocation& invocation, PieceRunner& runner, BatchTask task) {
  const bool json = invocation.Has(OptionId::Json);
  const std::size_t files = task.plan.files.size();
  OrEnd(ExitStatus::JobFailed, os::MakePath(os::FromNative(task.directory)));
  const BatchRecord record = OrEnd(
      ExitStatus::JobFailed,
      BatchRecord::Begin(task.directory, std::move(task.plan), invocation.Has(OptionId::Resume)));
  // Whoever does the work now, no task of before may do it at the same time.
  EndEarlierArrays(record);
  const bool shows = !json && os::IsTerminal(os::StandardHandle(os::StandardStream::Error));
  GatheredResults results(files, shows);
  auto known = OrEnd(ExitStatus::JobFailed, record.LoadAll());
  const std::size_t earlier = known.size();
  for (auto& [index, result] : known) results.Add(index, std::move(result));
  ExitStatus end = RunPieces(runner, record, results);
  if (shows) ClearProgress();
  ExitStatus finished = ExitStatus::Done;
  if (end != ExitStatus::Cancelled && task.finish) finished = task.finish();
  if (finished == ExitStatus::Cancelled) end = finished;
  WriteSummary(results, task, files, earlier, json);
  if (end == ExitStatus::Cancelled) {
    WriteErrorLine("the batch goes on with the same command and --resume");
    return WriteCancelled(json);
  }
  OrEnd(ExitStatus::JobFailed, record.Remove());
  return results.Status() == ExitStatus::Done ? finished : results.Status();
}

}  // namespace rastrel::cli
