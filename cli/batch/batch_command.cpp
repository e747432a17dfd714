#include "cli/batch/batch_command.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "cli/batch/batch_options.h"
#include "cli/batch/batch_run.h"
#include "cli/batch/merge_batch.h"
#include "cli/console/standard_streams.h"
#include "cli/input/result_names.h"
#include "cli/input/standard_input.h"
#include "cli/installation/installation.h"
#include "cli/installation/print_modes.h"
#include "cli/installation/printers.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::cli {
namespace {

constexpr const char* ResultExtension = ".png";

// A command that a batch can do for each file, and its results.
struct BatchWork {
  enum class Results {
    None,   // its lines are all
    One,    // a file of the operand's name
    Pages,  // files of a printer
  };
  CommandId id;
  const char* command;
  Results results;
};
using Results = BatchWork::Results;

constexpr std::array Works{BatchWork{CommandId::BatchConvert, "convert", Results::One},
                           BatchWork{CommandId::BatchPreview, "preview", Results::One},
                           BatchWork{CommandId::BatchPageSize, "pagesize", Results::None},
                           BatchWork{CommandId::BatchPrint, "print", Results::Pages}};

const BatchWork& WorkOf(const Invocation& invocation) {
  return *std::ranges::find(Works, invocation.command, &BatchWork::id);
}

std::string DirectoryOf(const Invocation& invocation) {
  const std::string given = invocation.ValueOr(OptionId::BatchOutput, "");
  if (given.empty() || given == StandardOutputName)
    throw CommandError(ExitStatus::WrongUse, "name the directory of the results: -o DIR");
  return FullDirectory(given);
}

BatchPlan PlanOf(const Invocation& invocation, const std::string& directory) {
  const BatchWork& work = WorkOf(invocation);
  BatchPlan plan{.words = {work.command}, .files = invocation.operands};
  AddOptions(invocation, plan.words);
  if (work.results == Results::One) {
    plan.words.push_back("--output=" + directory);
    plan.words.emplace_back("--force");
  }
  if (work.results == Results::Pages) {
    plan.staged = true;
    plan.replaces = invocation.Has(OptionId::Force);
  }
  return plan;
}

// All files go to one printer in one mode: a slip is said once.
void CheckPrinting(const Invocation& invocation) {
  const auto printers = OrEnd(ExitStatus::NotInstalled, ReadPrinters());
  OrEnd(ExitStatus::WrongUse,
        CheckTakesSeveral(printers, invocation.ValueOr(OptionId::Printer, DefaultPrinter)));
  static_cast<void>(ModeOrEnd(invocation.ValueOr(OptionId::Mode, DefaultMode)));
}

void CheckFiles(const Invocation& invocation, const std::string& directory, bool hasRecord) {
  const BatchWork& work = WorkOf(invocation);
  if (std::ranges::find(invocation.operands, StandardInputOperand) != invocation.operands.end())
    throw CommandError(ExitStatus::WrongUse, "a batch reads files, and no standard input");
  if (work.results == Results::None) return;
  CheckResultNames(invocation, directory, ResultExtension, work.command);
  if (work.results == Results::Pages) return;
  // Those of a batch that goes on are its own.
  if (hasRecord || invocation.Has(OptionId::Force)) return;
  if (!os::Exists(os::FromNative(directory))) return;
  for (const std::string& file : invocation.operands)
    OrEnd(ExitStatus::JobFailed,
          os::CheckPlace(
              ResultNameFor(directory, JobNameOfOperand(invocation, file), ResultExtension),
              os::Existing::Refused));
}

}  // namespace

ExitStatus BatchCommand(const Invocation& invocation) {
  const auto runner = RunnerOf(invocation);
  if (invocation.command == CommandId::BatchMerge) return MergeInBatch(invocation, *runner);
  const std::string directory = DirectoryOf(invocation);
  CheckFiles(invocation, directory, HasRecord(directory));
  OrEnd(ExitStatus::NotInstalled, MakeSureOfDataRoot());
  if (invocation.command == CommandId::BatchPrint) CheckPrinting(invocation);
  return RunBatch(invocation, *runner,
                  {.directory = directory, .plan = PlanOf(invocation, directory), .finish = {}});
}

}  // namespace rastrel::cli
