#include "cli/batch/batch_piece.h"

#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/batch/batch_record.h"
#include "cli/batch/lost_file.h"
#include "cli/batch/staged_results.h"
#include "cli/console/command_runs.h"
#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/json_line.h"
#include "cli/console/run_program.h"
#include "cli/console/standard_streams.h"
#include "cli/console/values.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::cli {
namespace {

bool WantsJson(const BatchPlan& plan) {
  for (const std::string& word : plan.words)
    if (word == "--json") return true;
  return false;
}

void WriteFailure(const BatchPlan& plan, const std::string& text) {
  WriteErrorMessage({ExitStatus::JobFailed, text}, WantsJson(plan));
}

FileResult Failed(const BatchPlan& plan, const std::string& text) {
  HeldOutput held;
  WriteFailure(plan, text);
  return {static_cast<int>(ExitStatus::JobFailed), held.Take()};
}

// As `print` names each of several files.
void TellFile(const std::string& file) {
  JsonLine("job").Add("originator", "system").Add("text", "printing").Add("path", file).Write();
}

// One that dies for a reason that passes, as a lack of memory, gets another chance.
FileResult RunFile(CommandRuns& runs, const BatchRecord& record, std::size_t index) {
  const BatchPlan& plan = record.Plan();
  const std::string& file = plan.files[index];
  StagedResults staged(record, index);
  for (int attempt = 1;; ++attempt) {
    std::vector<std::string> arguments = plan.words;
    if (plan.staged) {
      if (const auto prepared = staged.Prepare(); !prepared)
        return Failed(plan, file + ": " + Describe(prepared.Error()));
      arguments.push_back("--output=" + staged.Directory());
    }
    arguments.insert(arguments.end(), {"--", file});
    HeldOutput held;
    if (plan.staged && WantsJson(plan)) TellFile(file);
    const auto status = runs.Run(arguments, false);
    if (!status && attempt < PieceAttempts && !runs.IsStopped()) continue;
    if (!status) {
      WriteFailure(
          plan, file + ": " + Describe(status.Error()) + ", " + std::to_string(attempt) + " times");
      return {static_cast<int>(ExitStatus::JobFailed), held.Take()};
    }
    if (!plan.staged || *status == ExitStatus::Cancelled)
      return {static_cast<int>(*status), held.Take()};
    HeldText text = staged.WithPlaces(held.Take());
    // Its lines don't name the file.
    if (*status != ExitStatus::Done && !WantsJson(plan))
      text.pieces.insert(text.pieces.begin(), {true, os::CleanLine("printing: " + file) + "\n"});
    const auto delivered = staged.Deliver();
    if (!delivered) WriteFailure(plan, file + ": " + Describe(delivered.Error()));
    HeldText more = held.Take();
    text.pieces.insert(text.pieces.end(), more.pieces.begin(), more.pieces.end());
    return {static_cast<int>(delivered ? *status : ExitStatus::JobFailed), std::move(text)};
  }
}

ExitStatus RunPiece(std::span<const char* const> words) {
  EndWithCommandRuns();
  constexpr int Maximum = std::numeric_limits<int>::max();
  if (words.size() != 5) throw CommandError(ExitStatus::WrongUse, "a piece has three arguments");
  const auto first = static_cast<std::size_t>(
      OrEnd(ExitStatus::WrongUse, WholeNumberOf("FIRST", words[3], 0, Maximum)));
  const auto count = static_cast<std::size_t>(
      OrEnd(ExitStatus::WrongUse, WholeNumberOf("COUNT", words[4], 1, Maximum)));
  const BatchRecord record = OrEnd(ExitStatus::BadInput, BatchRecord::Open(words[2]));
  return DoPiece(record, {first, count});
}

}  // namespace

ExitStatus DoPiece(const BatchRecord& record, const BatchPiece& piece) {
  const auto& files = record.Plan().files;
  const auto [first, count] = piece;
  if (first >= files.size() || count > files.size() - first)
    throw CommandError(ExitStatus::WrongUse, "the batch has not so many files");
  const auto runs = OrEnd(ExitStatus::JobFailed, CommandRuns::Create());
  const auto begin = std::chrono::steady_clock::now();
  std::vector<FileResult> results;
  for (std::size_t index = first; index < first + count && !runs->IsStopped(); ++index) {
    FileResult result = RunFile(*runs, record, index);
    if (!runs->IsStopped() || result.status == 0) results.push_back(std::move(result));
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  if (!results.empty()) OrEnd(ExitStatus::JobFailed, record.Store(first, results, took.count()));
  return runs->IsStopped() ? ExitStatus::Cancelled : ExitStatus::Done;
}

int RunBatchPiece(int count, const char* const* arguments) {
  return RunReported(
      [&] { return RunPiece(std::span(arguments, static_cast<std::size_t>(count))); });
}

}  // namespace rastrel::cli
