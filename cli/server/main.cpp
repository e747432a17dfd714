// The program `rastrel-server`: the print shop's server, and the commands on its queue. `rastrel`
// starts it in its own place.

#include <cstddef>
#include <span>
#include <string_view>

#include "cli/console/exit_status.h"
#include "cli/console/run_program.h"
#include "cli/server/folder_command.h"
#include "cli/server/jobs_change.h"
#include "cli/server/jobs_view.h"
#include "cli/server/serve_command.h"
#include "cli/server/server_health.h"
#include "cli/server/users_command.h"
#include "cli/server/worker.h"

namespace {

using namespace rastrel::cli;

ExitStatus Run(const Invocation& invocation) {
  switch (invocation.command) {
    case CommandId::Serve: return ServeCommand(invocation);
    case CommandId::JobsAdd: return AddJobsCommand(invocation);
    case CommandId::JobsList: return ListJobsCommand(invocation);
    case CommandId::JobsShow: return ShowJobCommand(invocation);
    case CommandId::JobsExport: return ExportJobsCommand(invocation);
    case CommandId::JobsHold:
    case CommandId::JobsRelease:
    case CommandId::JobsCancel:
    case CommandId::JobsMove:
    case CommandId::JobsPriority:
    case CommandId::JobsAccept:
    case CommandId::JobsRemove: return ChangeJobsCommand(invocation);
    case CommandId::JobsReprint: return ReprintJobCommand(invocation);
    case CommandId::UsersList: return ListUsersCommand(invocation);
    case CommandId::UsersAdd: return AddUserCommand(invocation);
    case CommandId::UsersRole:
    case CommandId::UsersRemove: return ChangeUserCommand(invocation);
    case CommandId::FolderList: return ListFoldersCommand(invocation);
    case CommandId::FolderAdd: return AddFolderCommand(invocation);
    case CommandId::FolderRemove: return RemoveFolderCommand(invocation);
    case CommandId::Doctor: return ServerHealthCommand(invocation);
    default: break;
  }
  throw CommandError(ExitStatus::WrongUse,
                     "this program is a part of `rastrel`; see `rastrel help serve`");
}

}  // namespace

int main(int count, char** arguments) {
  const std::span words(arguments, static_cast<std::size_t>(count));
  if (count == 2 && std::string_view(words[1]) == InterpretingWorker) return RunInterpreter();
  if (count == 3 && std::string_view(words[1]) == DeliveringWorker) return RunDeliverer(words[2]);
  return RunProgram(count, arguments, Run);
}
