#include "cli/console/other_programs.h"

#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"

namespace rastrel::cli {
namespace {

os::SpawnRequest RequestOf(const std::string& program, const std::vector<std::string>& arguments,
                           HANDLE nothing) {
  os::SpawnRequest request;
  request.executable = program;
  request.arguments = {program};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  request.environment = os::EnvironmentEntries();
  request.standardInput = nothing;
  request.standardOutput = nothing;
  request.standardError = nothing;
  return request;
}

os::FileDescriptor OpenNothing() {
  auto file = os::OpenForWriting(L"/dev/null");
  return file ? std::move(*file) : os::FileDescriptor();
}

}  // namespace

bool StartAndForget(const std::string& program, const std::vector<std::string>& arguments) {
  const os::FileDescriptor nothing = OpenNothing();
  if (!nothing.IsOpen()) return false;
  const auto child = os::Spawn(RequestOf(program, arguments, nothing.Get()));
  if (!child) return false;
  const os::FileDescriptor process(child->process);
  return true;
}

}  // namespace rastrel::cli
