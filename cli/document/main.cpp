// The program `rastrel-document`: the commands of `rastrel` that open documents. `rastrel` starts
// it in its own place.

#include <cstdlib>
#include <string>

#include "cli/console/exit_status.h"
#include "cli/console/help.h"
#include "cli/console/run_program.h"
#include "cli/console/standard_streams.h"
#include "cli/document/convert_command.h"
#include "cli/document/cut_command.h"
#include "cli/document/import_command.h"
#include "cli/document/merge_command.h"
#include "cli/document/merge_part.h"
#include "cli/document/separate_command.h"
#include "cli/document/view_command.h"
#include "host/text/library_log.h"

namespace {

using namespace rastrel::cli;

ExitStatus Run(const Invocation& invocation) {
  switch (invocation.command) {
    case CommandId::Convert: return ConvertCommand(invocation);
    case CommandId::Cut: return CutCommand(invocation);
    case CommandId::Import: return ImportCommand(invocation);
    case CommandId::Merge: return MergeCommand(invocation);
    case CommandId::Separate: return SeparateCommand(invocation);
    case CommandId::View: return ViewCommand(invocation);
    default: break;
  }
  throw CommandError(ExitStatus::WrongUse,
                     "this program is a part of `rastrel`; see `rastrel help import`");
}

// A library that finds no thread or no memory can't go on, and its caller neither. No file has its
// name before it is whole, so nothing half is left.
void EndWith(const std::string& message) {
  WriteErrorLine("rastrel: " + message);
  std::_Exit(static_cast<int>(ExitStatus::JobFailed));
}

}  // namespace

int main(int count, char** arguments) {
  rastrel::text::GuardLibraryLog(EndWith);
  const int part = RunMergePart(count, arguments);
  return part >= 0 ? part : RunProgram(count, arguments, Run);
}
