#include "cli/batch/batch_piece.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/batch/batch_record.h"
#include "cli/batch/lost_file.h"
#include "cli/console/command_runs.h"
#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/values.h"

namespace rastrel::cli {
namespace {

bool WantsJson(const BatchPlan& plan) {
  for (const std::string& word : plan.words)
    if (word == "--json") return true;
  return false;
}

// One that dies for a reason that passes, as a lack of memory, gets another chance.
FileResult RunFile(CommandRuns& runs, const BatchPlan& plan, const std::string& file) {
  std::vector<std::string> arguments = plan.words;
  arguments.insert(arguments.end(), {"--", file});
  for (int attempt = 1;; ++attempt) {
    HeldOutput held;
    const auto status = runs.Run(arguments, false);
    if (status) return {static_cast<int>(*status), held.Take()};
    if (attempt < PieceAttempts && !runs.IsStopped()) continue;
    WriteErrorMessage({ExitStatus::JobFailed, file + ": " + Describe(status.Error()) + ", " +
                                                  std::to_string(attempt) + " times"},
                      WantsJson(plan));
    return {static_cast<int>(ExitStatus::JobFailed), held.Take()};
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
    FileResult result = RunFile(*runs, record.Plan(), files[index]);
    if (!runs->IsStopped() || result.status == 0) results.push_back(std::move(result));
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  if (!results.empty()) OrEnd(ExitStatus::JobFailed, record.Store(first, results, took.count()));
  return runs->IsStopped() ? ExitStatus::Cancelled : ExitStatus::Done;
}

int RunBatchPiece(int count, const char* const* arguments) {
  try {
    return static_cast<int>(RunPiece(std::span(arguments, static_cast<std::size_t>(count))));
  } catch (const CommandError& error) {
    WriteErrorMessage(error, false);
    return static_cast<int>(error.Status());
  } catch (const std::exception& error) {
    WriteErrorMessage({ExitStatus::JobFailed, error.what()}, false);
    return static_cast<int>(ExitStatus::JobFailed);
  }
}

}  // namespace rastrel::cli
