#include "cli/server/job_options.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/values.h"
#include "cli/installation/print_modes.h"
#include "cli/printing/job_settings.h"
#include "cli/printing/page_ranges.h"

namespace rastrel::cli {
namespace {

// Others of a print name files of their own, or a place of the result.
constexpr std::array TakenOptions{
    OptionId::Mode,         OptionId::Copies,     OptionId::Pages,     OptionId::Planar,
    OptionId::Scale,        OptionId::Levels,     OptionId::LevelsRed, OptionId::LevelsGreen,
    OptionId::LevelsBlue,   OptionId::LevelsGray, OptionId::CutColor,  OptionId::Box,
    OptionId::ParallelPages};

// Of a merge beside those of its print; the names are the command's.
constexpr std::array<std::string_view, 4> MergeOptions{"template", "data", "sheet", "blank"};

bool IsOfMerge(const server::Job& job, const std::string& name) {
  return job.work == server::JobWork::Merge &&
         std::ranges::find(MergeOptions, name) != MergeOptions.end();
}

}  // namespace

Invocation InvocationOf(const server::Job& job) {
  Invocation invocation;
  invocation.command = CommandId::Print;
  for (const auto& [name, value] : job.options) {
    if (IsOfMerge(job, name)) continue;
    bool isTaken = false;
    for (const OptionId id : TakenOptions)
      if (name == OptionOf(id).name + 2) {
        invocation.options[id] = value;
        isTaken = true;
      }
    if (!isTaken) throw CommandError(ExitStatus::WrongUse, "a print has no option '" + name + "'");
  }
  return invocation;
}

void CheckPrintOptions(const Invocation& invocation) {
  CJobData settings;
  OrEnd(ExitStatus::WrongUse, ApplySettings(settings, invocation, TicketKind::Print));
  static_cast<void>(
      OrEnd(ExitStatus::WrongUse, ParseCopies(invocation.ValueOr(OptionId::Copies, "1"))));
  if (invocation.Has(OptionId::Pages))
    static_cast<void>(
        OrEnd(ExitStatus::WrongUse, ParsePages(invocation.ValueOr(OptionId::Pages, ""))));
  if (invocation.Has(OptionId::Mode))
    static_cast<void>(ModeOrEnd(invocation.ValueOr(OptionId::Mode, "")));
}

}  // namespace rastrel::cli
