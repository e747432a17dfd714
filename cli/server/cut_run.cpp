#include "cli/server/cut_run.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/input/input_file.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;
using enum TicketEnd::Kind;

constexpr auto LookInterval = 200ms;
constexpr std::size_t MaximumText = std::size_t{64} << 10;  // of the child's lines
constexpr int MaximumMessages = 100;
constexpr std::array TakenOptions{"rules", "box"};

std::vector<std::string> ArgumentsOf(const server::Job& job, const std::string& result) {
  std::vector<std::string> arguments{"rastrel-cutting", "cut", job.file, "--output", result};
  for (const auto& [name, value] : job.options) {
    if (std::ranges::find(TakenOptions, name) == TakenOptions.end())
      throw CommandError(ExitStatus::WrongUse, "a cut has no option '" + name + "'");
    arguments.push_back("--" + name);
    arguments.push_back(value);
  }
  if (!job.options.contains("rules"))
    throw CommandError(ExitStatus::WrongUse, "a cut needs rules: which paths are cut");
  return arguments;
}

// The child and the pipe of its lines.
struct Cutting {
  os::FileDescriptor process;
  os::FileDescriptor lines;
};

Expected<Cutting> Start(const std::vector<std::string>& arguments) {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  if (auto made = os::CreatePipe(reading, writing, 0); !made) return made.Error();
  Cutting cutting{{}, os::FileDescriptor(reading)};
  const os::FileDescriptor childsEnd(writing);
  const auto nothing = os::OpenForReading(L"/dev/null");
  if (!nothing) return nothing.Error();
  os::SpawnRequest request;
  request.executable = standalone::FindResources().programs + "/rastrel-cutting";
  request.arguments = arguments;
  request.environment = os::EnvironmentEntries();
  // It ends with this process (command_runs.h).
  std::erase_if(request.environment,
                [](const auto& one) { return one.starts_with("RASTREL_STARTER="); });
  request.environment.push_back("RASTREL_STARTER=" + std::to_string(os::CurrentProcessId()));
  request.standardInput = nothing->Get();
  request.standardOutput = childsEnd.Get();
  request.standardError = childsEnd.Get();
  const auto child = os::Spawn(request);
  if (!child) return child.Error();
  cutting.process = os::FileDescriptor(child->process);
  return cutting;
}

// Reads the child's lines to their end. False if it is to end before.
bool ReadLines(server::JobQueue& queue, const server::Job& job, const Cutting& cutting,
               std::string& text) {
  for (;;) {
    if (IsStopAsked() || queue.IsCancelAsked(job.id).ValueOr(false)) return false;
    const std::array handles{cutting.lines.Get()};
    if (os::WaitReadable(handles, os::Deadline::After(LookInterval)) == os::WaitTimeout) continue;
    std::array<char, 4096> bytes;
    const std::size_t count =
        os::ReadSome(cutting.lines.Get(), bytes.data(), bytes.size()).ValueOr(0);
    if (count == 0) return true;
    if (text.size() < MaximumText) text.append(bytes.data(), count);
  }
}

// Gives the lines to the queue; returns the last one.
std::string TellLines(server::JobQueue& queue, const server::Job& job, const std::string& text) {
  std::string last;
  std::size_t begin = 0;
  for (int count = 0; begin < text.size() && count < MaximumMessages; ++count) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    if (end > begin) {
      last = text.substr(begin, end - begin);
      static_cast<void>(queue.AddMessage(job.id, last));
    }
    begin = end + 1;
  }
  return last;
}

TicketEnd EndOf(const os::ExitState& state, const std::string& last) {
  if (state.byItself && state.status == 0) return {Done, 0, ""};
  if (!state.byItself)
    return {Failed, static_cast<int>(ExitStatus::JobFailed),
            "the cut was ended by signal " + std::to_string(state.status)};
  return {Failed, state.status, last.empty() ? "the cut failed" : last};
}

}  // namespace

TicketEnd RunCut(server::JobQueue& queue, const server::Job& job, const std::string& directory) {
  const std::string result = directory + "/" + SafeJobName(job.title) + ".hpgl";
  const Cutting cutting = OrEnd(ExitStatus::JobFailed, Start(ArgumentsOf(job, result)));
  std::string text;
  const bool isRead = ReadLines(queue, job, cutting, text);
  if (!isRead) {
    static_cast<void>(os::Terminate(cutting.process.Get()));
    return {queue.IsCancelAsked(job.id).ValueOr(false) ? Canceled : Stopped, 0, ""};
  }
  const std::array handles{cutting.process.Get()};
  static_cast<void>(os::WaitReadable(handles, os::Deadline::Never()));
  const auto state = OrEnd(ExitStatus::JobFailed, os::TakeExitState(cutting.process.Get()));
  return EndOf(state, TellLines(queue, job, text));
}

}  // namespace rastrel::cli
