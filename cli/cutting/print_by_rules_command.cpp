#include "cli/cutting/print_by_rules_command.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "cli/console/standard_streams.h"
#include "cli/cutting/cut_pipeline.h"
#include "cli/input/input_file.h"
#include "cli/installation/installation.h"
#include "cli/installation/job_directory.h"
#include "cli/installation/print_modes.h"
#include "cli/printing/print_command.h"
#include "cli/printing/separation_print.h"

namespace rastrel::cli {
namespace {

void CheckUse(const Invocation& invocation) {
  if (invocation.operands.size() != 1)
    throw CommandError(ExitStatus::WrongUse,
                       "give one FILE: a cutter's file is made of one page of one file");
  // Each would part the print from the cutter's frame, or choose pages a second time.
  for (const OptionId id : {OptionId::Scale, OptionId::CutColor, OptionId::Pages})
    if (invocation.Has(id))
      throw CommandError(ExitStatus::WrongUse,
                         std::string(OptionOf(id).name) +
                             " goes with no --rules, --marks and --cut-output" +
                             (id == OptionId::Pages ? "; choose one page with --page" : ""));
  if (PrintsToSeparation(invocation))
    throw CommandError(ExitStatus::WrongUse,
                       "the printer 'Separation' keeps the file as it is, without rules and marks");
}

// The part of the command that `rastrel cut` has.
Invocation CutInvocation(const Invocation& invocation, const std::string& print,
                         const std::string& unwanted) {
  Invocation cut = invocation;
  cut.command = CommandId::Cut;
  cut.options[OptionId::CutPrint] = print;
  cut.options.try_emplace(OptionId::Mode, DefaultMode);
  cut.options[OptionId::ResultOutput] = invocation.ValueOr(OptionId::CutOutput, unwanted);
  return cut;
}

// The part that prints the page that is made.
Invocation PagePrint(const Invocation& invocation, const std::string& print) {
  Invocation page = invocation;
  for (const OptionId id :
       {OptionId::CutRules, OptionId::CutMarks, OptionId::CutOutput, OptionId::Bleed,
        OptionId::ChosenPage, OptionId::Box, OptionId::PasswordFile, OptionId::ParallelPages})
    page.options.erase(id);
  page.operand = print;
  page.operands = {print};
  return page;
}

}  // namespace

ExitStatus PrintByRulesCommand(const Invocation& invocation) {
  if (!invocation.Has(OptionId::CutRules) && !invocation.Has(OptionId::CutMarks) &&
      !invocation.Has(OptionId::CutOutput) && !invocation.Has(OptionId::Bleed))
    return PrintCommand(invocation);
  CheckUse(invocation);
  const InputFile input = OrEnd(ExitStatus::BadInput, InspectInput(invocation.operand));
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  const JobDirectory place = OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false));
  const std::string print = place.Path() + "/" + input.safeName + ".pdf";
  const Invocation cut = CutInvocation(invocation, print, place.Path() + "/unwanted.json");
  {
    CutRun run(cut);
    RunPipeline(run);
    if (invocation.Has(OptionId::CutOutput))
      run.Note("the cutter's file is '" + invocation.ValueOr(OptionId::CutOutput, "") + "'");
  }
  // The results get the permissions of the file, and not those of a private copy.
  std::error_code error;
  std::filesystem::permissions(print, static_cast<std::filesystem::perms>(input.access), error);
  if (error)
    throw CommandError(ExitStatus::JobFailed,
                       "can't set the permissions of the page: " + error.message());
  ShowPathAs(print, invocation.operand);
  return PrintCommand(PagePrint(invocation, print));
}

}  // namespace rastrel::cli
