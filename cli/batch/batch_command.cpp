#include "cli/batch/batch_command.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "cli/batch/batch_record.h"
#include "cli/batch/gathered_results.h"
#include "cli/batch/local_pieces.h"
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
  constexpr std::array Own{OptionId::Jobs, OptionId::BatchOutput, OptionId::PieceSeconds,
                           OptionId::Resume, OptionId::Force};
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

}  // namespace

ExitStatus BatchCommand(const Invocation& invocation) {
  const unsigned atOnce = OrEnd(ExitStatus::WrongUse, FilesAtOnce(invocation));
  const int seconds = OrEnd(
      ExitStatus::WrongUse,
      WholeNumberOf("--piece-seconds", invocation.ValueOr(OptionId::PieceSeconds, DefaultSeconds),
                    1, MaximumSeconds));
  const bool json = invocation.Has(OptionId::Json);
  const std::string directory = DirectoryOf(invocation);
  const bool resume = invocation.Has(OptionId::Resume);
  CheckFiles(invocation, directory, HasRecord(directory));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  OrEnd(ExitStatus::JobFailed, os::MakePath(os::FromNative(directory)));
  const BatchRecord record = OrEnd(
      ExitStatus::JobFailed, BatchRecord::Begin(directory, PlanOf(invocation, directory), resume));
  const std::size_t files = invocation.operands.size();
  GatheredResults results(files,
                          !json && os::IsTerminal(os::StandardHandle(os::StandardStream::Error)));
  auto known = OrEnd(ExitStatus::JobFailed, record.LoadAll());
  const std::size_t earlier = known.size();
  for (auto& [index, result] : known) results.Add(index, std::move(result));
  const ExitStatus end = RunLocalPieces(record, results, atOnce, seconds);
  ClearProgress();
  WriteSummary(results, files, earlier, json);
  if (end == ExitStatus::Cancelled) {
    WriteErrorLine("the batch goes on with the same command and --resume");
    return WriteCancelled(json);
  }
  OrEnd(ExitStatus::JobFailed, record.Remove());
  return results.Status();
}

}  // namespace rastrel::cli
