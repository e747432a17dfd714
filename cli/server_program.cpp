#include "cli/server_program.h"

#include <cerrno>

#include "rastrel/platform/os/process.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {

ExitStatus RunServerProgram(const std::vector<std::string>& arguments) {
  const CommandError notInstalled(
      ExitStatus::NotInstalled, "rastrel-server, which keeps the queue of jobs, is not installed");
  const std::string programs = standalone::FindResources().programs;
  if (programs.empty()) throw notInstalled;
  const Failure failure = os::ReplaceProcess(programs + "/rastrel-server", arguments);
  if (failure.error == ENOENT) throw notInstalled;
  throw CommandError(
      ExitStatus::NotInstalled,
      "rastrel-server, which keeps the queue of jobs, can't be started: " + Describe(failure));
}

}  // namespace rastrel::cli
