#include "cli/server_program.h"

#include "rastrel/platform/os/process.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {

ExitStatus RunServerProgram(const std::vector<std::string>& arguments) {
  const std::string programs = standalone::FindResources().programs;
  if (programs.empty())
    throw CommandError(ExitStatus::NotInstalled,
                       "rastrel-server, which keeps the queue of jobs, is not installed");
  const Failure failure = os::ReplaceProcess(programs + "/rastrel-server", arguments);
  throw CommandError(
      ExitStatus::NotInstalled,
      "rastrel-server, which keeps the queue of jobs, can't be started: " + Describe(failure));
}

}  // namespace rastrel::cli
