#include "cli/batch/batch_command.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "cli/batch/batch_record.h"
#include "cli/batch/gathered_results.h"
#include "cli/batch/local_pieces.h"
#include "cli/batch/slurm_pieces.h"
#include "cli/console/cancelled.h"
#include "cli/console/files_at_once.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "cli/input/result_names.h"
#include "cli/input/standard_input.h"
#include "cli/installation/installation.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::cli {
namespace {

constexpr const char* DefaultSeconds = "5";
constexpr int MaximumSeconds = 3600;
constexpr const char* ResultExtension = ".png";
constexpr const char* OnLocal = "local";
constexpr const char* OnSlurm = "slurm";

// A command that a batch can do, and its result for each file.
struct BatchWork {
  CommandId id;
  const char* command;
  bool hasResults;  // else its lines are all
};

constexpr std::array Works{BatchWork{CommandId::BatchConvert, "convert", true},
                           BatchWork{CommandId::BatchPreview, "preview", true},
                           BatchWork{CommandId::BatchPageSize, "pagesize", false}};

const BatchWork& WorkOf(const Invocation& invocation) {
  return *std::ranges::find(Works, invocation.command, &BatchWork::id);
}

// Options of the batch itself. --force is each run's: a file that is done again replaces its own
// result, and others were looked for before the first.
bool IsOwnOption(OptionId id) {
  constexpr std::array Own{OptionId::Jobs,           OptionId::BatchOutput,
                           OptionId::PieceSeconds,   OptionId::Resume,
                           OptionId::Force,          OptionId::BatchOn,
                           OptionId::BatchPartition, OptionId::BatchAccount,
                           OptionId::BatchTimeLimit, OptionId::BatchLicenses};
  return std::ranges::find(Own, id) != Own.end();
}

std::string DirectoryOf(const Invocation& invocation) {
  const std::string given = invocation.ValueOr(OptionId::BatchOutput, "");
  if (given.empty() || given == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse, "name the directory of the results: -o DIR");
  // The runs may have another working directory than the reader of the record.
  std::error_code error;
  const auto full = std::filesystem::absolute(given, error);
  if (error) throw CommandError(ExitStatus::JobFailed, "'" + given + "': " + error.message());
  std::string directory = full.lexically_normal();
  return directory.ends_with('/') ? directory : directory + "/";
}

BatchPlan PlanOf(const Invocation& invocation, const std::string& directory) {
  const BatchWork& work = WorkOf(invocation);
  BatchPlan plan{.words = {work.command}, .files = invocation.operands};
  for (const auto& [id, value] : invocation.options) {
    if (IsOwnOption(id)) continue;
    const OptionRow& option = OptionOf(id);
    plan.words.emplace_back(option.name);
    // Joined, so that a value may begin with a dash.
    if (*option.value != '\0') plan.words.back() += "=" + value;
  }
  if (work.hasResults) {
    plan.words.push_back("--output=" + directory);
    plan.words.emplace_back("--force");
  }
  return plan;
}

void CheckFiles(const Invocation& invocation, const std::string& directory, bool hasRecord) {
  const BatchWork& work = WorkOf(invocation);
  if (std::ranges::find(invocation.operands, StandardInputOperand) != invocation.operands.end())
    throw CommandError(ExitStatus::WrongUse, "a batch reads files, and no standard input");
  if (!work.hasResults) return;
  CheckResultNames(invocation, directory, ResultExtension, work.command);
  // Those of a batch that goes on are its own.
  if (hasRecord || invocation.Has(OptionId::Force)) return;
  if (!os::Exists(os::FromNative(directory))) return;
  for (const std::string& file : invocation.operands)
    OrEnd(ExitStatus::JobFailed,
          os::CheckPlace(
              ResultNameFor(directory, JobNameOfOperand(invocation, file), ResultExtension),
              os::Existing::Refused));
}

bool HasRecord(const std::string& directory) {
  return os::IsDirectory(os::FromNative(directory + BatchRecordName));
}

void WriteSummary(const GatheredResults& results, std::size_t files, std::size_t earlier,
                  bool json) {
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
                     std::to_string(files) + " files are done";
  if (results.Failed() > 0) line += ", " + std::to_string(results.Failed()) + " failed";
  if (earlier > 0) line += "; " + std::to_string(earlier) + " of an earlier run";
  WriteErrorLine(line);
}

// A value for the cluster, which is a word of an option there.
std::string WishOf(const Invocation& invocation, OptionId id) {
  const std::string value = invocation.ValueOr(id, "");
  if (!invocation.Has(id)) return value;
  if (value.empty())
    throw CommandError(ExitStatus::WrongUse, std::string(OptionOf(id).name) + " is empty");
  return value;
}

// Fails before there is a record if nobody can do the work.
std::unique_ptr<PieceRunner> RunnerOf(const Invocation& invocation) {
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  const int seconds = OrEnd(
      ExitStatus::WrongUse,
      WholeNumberOf("--piece-seconds", invocation.ValueOr(OptionId::PieceSeconds, DefaultSeconds),
                    1, MaximumSeconds));
  const SlurmWishes wishes{.partition = WishOf(invocation, OptionId::BatchPartition),
                           .account = WishOf(invocation, OptionId::BatchAccount),
                           .timeLimit = WishOf(invocation, OptionId::BatchTimeLimit),
                           .licenses = WishOf(invocation, OptionId::BatchLicenses),
                           .atOnce = invocation.Has(OptionId::Jobs) ? atOnce : 0};
  if (invocation.ValueOr(OptionId::BatchOn, OnLocal) == OnSlurm)
    return std::make_unique<SlurmPieces>(wishes, seconds);
  for (const OptionId id : {OptionId::BatchPartition, OptionId::BatchAccount,
                            OptionId::BatchTimeLimit, OptionId::BatchLicenses})
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) + " is for --on slurm");
  return std::make_unique<LocalPieces>(atOnce, seconds);
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

ExitStatus BatchCommand(const Invocation& invocation) {
  const auto runner = RunnerOf(invocation);
  const bool json = invocation.Has(OptionId::Json);
  const std::string directory = DirectoryOf(invocation);
  const bool resume = invocation.Has(OptionId::Resume);
  CheckFiles(invocation, directory, HasRecord(directory));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::JobFailed, os::MakePath(os::FromNative(directory)));
  const BatchRecord record = OrEnd(
      ExitStatus::JobFailed, BatchRecord::Begin(directory, PlanOf(invocation, directory), resume));
  const std::size_t files = invocation.operands.size();
  const bool shows = !json && os::IsTerminal(os::StandardHandle(os::StandardStream::Error));
  GatheredResults results(files, shows);
  auto known = OrEnd(ExitStatus::JobFailed, record.LoadAll());
  const std::size_t earlier = known.size();
  for (auto& [index, result] : known) results.Add(index, std::move(result));
  const ExitStatus end = RunPieces(*runner, record, results);
  if (shows) ClearProgress();
  WriteSummary(results, files, earlier, json);
  if (end == ExitStatus::Cancelled) {
    WriteErrorLine("the batch goes on with the same command and --resume");
    return WriteCancelled(json);
  }
  OrEnd(ExitStatus::JobFailed, record.Remove());
  return results.Status();
}

}  // namespace rastrel::cli
