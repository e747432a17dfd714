// The program `rastrel-cutting`: the commands of `rastrel` that make files for cutters. `rastrel`
// starts it in its own place.

#include "cli/console/exit_status.h"
#include "cli/console/run_program.h"
#include "cli/cutting/cut_job_command.h"
#include "cli/cutting/nest_command.h"
#include "cli/cutting/print_by_rules_command.h"
#include "cli/cutting/rules_command.h"
#include "cli/cutting/send_command.h"

namespace {

using namespace rastrel::cli;

ExitStatus Run(const Invocation& invocation) {
  switch (invocation.command) {
    case CommandId::Cut: return CutJobCommand(invocation);
    case CommandId::Print: return PrintByRulesCommand(invocation);
    case CommandId::Send: return SendCommand(invocation);
    case CommandId::Nest: return NestCommand(invocation);
    case CommandId::Tile: return TileCommand(invocation);
    case CommandId::RulesCheck: return CheckRulesCommand(invocation);
    case CommandId::RulesList: return ListRulesCommand(invocation);
    case CommandId::RulesShow: return ShowRulesCommand(invocation);
    default: break;
  }
  throw CommandError(ExitStatus::WrongUse,
                     "this program is a part of `rastrel`; see `rastrel help cut`");
}

}  // namespace

int main(int count, char** arguments) { return RunProgram(count, arguments, Run); }
