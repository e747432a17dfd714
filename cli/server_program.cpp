#include "cli/server_program.h"

#include <array>
#include <cerrno>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/reaper.h"
#include "rastrel/platform/os/wait.h"
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

Expected<std::optional<ExitStatus>> AskServerProgram(const std::vector<std::string>& arguments) {
  const std::string programs = standalone::FindResources().programs;
  os::SpawnRequest request;
  request.executable = programs + "/rastrel-server";
  if (programs.empty() || !os::Exists(os::FromNative(request.executable)))
    return std::optional<ExitStatus>();
  request.arguments = arguments;
  request.environment = os::EnvironmentEntries();
  const auto child = os::Spawn(request);
  if (!child) return child.Error();
  const os::FileDescriptor process(child->process);
  if (os::WaitReadable(std::array{process.Get()}, os::Deadline::Never()) == os::WaitFailed)
    static_cast<void>(os::Terminate(process.Get()));
  const auto end = os::TakeExitState(process.Get());
  os::ReleaseEndedChildren();
  if (!end) return end.Error();
  if (!end->byItself)
    return FailureOf("rastrel-server was ended by signal " + std::to_string(end->status));
  return std::optional(static_cast<ExitStatus>(end->status));
}

}  // namespace rastrel::cli
