#include "cli/server/job_options.h"

#include <array>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

// Others of a print name files of their own, or a place of the result.
constexpr std::array TakenOptions{
    OptionId::Mode,         OptionId::Copies,     OptionId::Pages,     OptionId::Planar,
    OptionId::Scale,        OptionId::Levels,     OptionId::LevelsRed, OptionId::LevelsGreen,
    OptionId::LevelsBlue,   OptionId::LevelsGray, OptionId::CutColor,  OptionId::Box,
    OptionId::ParallelPages};

}  // namespace

Invocation InvocationOf(const server::Job& job) {
  Invocation invocation;
  invocation.command = CommandId::Print;
  for (const auto& [name, value] : job.options) {
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

}  // namespace rastrel::cli
