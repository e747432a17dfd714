// The program `rastrel-document`: the commands of `rastrel` that open documents. `rastrel` starts
// it in its own place.

#include "cli/console/help.h"
#include "cli/console/run_program.h"
#include "cli/console/standard_streams.h"
#include "cli/document/import_command.h"
#include "cli/document/view_command.h"

namespace {

using namespace rastrel::cli;

ExitStatus Run(const Invocation& invocation) {
  switch (invocation.command) {
    case CommandId::Import: return ImportCommand(invocation);
    case CommandId::View: return ViewCommand(invocation);
    default: break;
  }
  throw CommandError(ExitStatus::WrongUse,
                     "this program is a part of `rastrel`; see `rastrel help import`");
}

}  // namespace

int main(int count, char** arguments) { return RunProgram(count, arguments, Run); }
