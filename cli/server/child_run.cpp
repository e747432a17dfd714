#include "cli/server/child_run.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "cli/console/command_runs.h"
#include "cli/server/worker.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::cli {
namespace {

using namespace std::chrono_literals;

constexpr auto LookInterval = 200ms;
constexpr std::size_t MaximumLine = 4096;
constexpr std::size_t FirstLines = 100;
constexpr std::size_t LastLines = 10;
constexpr std::size_t MaximumOutput = 4 * 1024 * 1024;

// The child and the pipe of its lines.
struct Child {
  os::FileDescriptor process;
  os::FileDescriptor lines;
  std::uint32_t id = 0;
};

Expected<Child> Start(const std::string& program, const std::vector<std::string>& arguments) {
  auto lines = os::MakePipe(0);
  if (!lines) return lines.Error();
  const auto nothing = os::OpenForReading(L"/dev/null");
  if (!nothing) return nothing.Error();
  os::SpawnRequest request;
  request.executable = standalone::FindResources().programs + "/" + program;
  request.arguments = arguments;
  request.environment = EnvironmentOfRun();
  request.standardInput = nothing->Get();
  request.standardOutput = lines->writing.Get();
  request.standardError = lines->writing.Get();
  const auto spawned = os::Spawn(request);
  if (!spawned) return spawned.Error();
  return Child{os::FileDescriptor(spawned->process), std::move(lines->reading), spawned->id};
}

// Takes output in pieces, and keeps the wanted lines of it.
class LineKeeper {
 public:
  LineKeeper(ChildRun& run, const LineFilter& isWanted) : m_Run(run), m_IsWanted(isWanted) {}

  void Take(std::string_view piece) {
    for (const char one : piece) {
      if (one == '\n')
        EndLine();
      else if (m_Line.size() < MaximumLine)
        m_Line += one;
    }
  }
  void EndLine() {
    if (!m_Line.empty() && m_IsWanted(m_Line)) Keep(std::move(m_Line));
    m_Line.clear();
  }

 private:
  void Keep(std::string line) {
    m_Run.lines.push_back(std::move(line));
    if (m_Run.lines.size() <= FirstLines + LastLines) return;
    m_Run.lines.erase(m_Run.lines.begin() + FirstLines);
    ++m_Run.omitted;
  }

  ChildRun& m_Run;
  const LineFilter& m_IsWanted;
  std::string m_Line;
};

// Reads the child's lines to their end. False if it is to end before.
bool ReadLines(server::JobQueue& queue, const server::Job& job, const Child& child,
               LineKeeper& lines) {
  for (;;) {
    if (IsStopAsked() || queue.IsCancelAsked(job.id).ValueOr(false)) return false;
    const std::array handles{child.lines.Get()};
    if (os::WaitReadable(handles, os::Deadline::After(LookInterval)) == os::WaitTimeout) continue;
    std::array<char, 4096> bytes;
    const std::size_t count =
        os::ReadSome(child.lines.Get(), bytes.data(), bytes.size()).ValueOr(0);
    if (count == 0) break;
    lines.Take({bytes.data(), count});
  }
  lines.EndLine();
  return true;
}

}  // namespace

Expected<ChildRun> RunChild(server::JobQueue& queue, const server::Job& job,
                            const std::string& program, const std::vector<std::string>& arguments,
                            const LineFilter& isWanted) {
  const auto child = Start(program, arguments);
  if (!child) return child.Error();
  ChildRun run;
  LineKeeper lines(run, isWanted);
  if (!ReadLines(queue, job, *child, lines)) {
    static_cast<void>(os::Terminate(child->process.Get()));
    run.end = queue.IsCancelAsked(job.id).ValueOr(false) ? ChildRun::End::Canceled
                                                         : ChildRun::End::Stopped;
    return run;
  }
  const std::array handles{child->process.Get()};
  static_cast<void>(os::WaitReadable(handles, os::Deadline::Never()));
  const auto state = os::TakeExitState(child->process.Get());
  if (!state) return state.Error();
  run.state = *state;
  return run;
}

Expected<LimitedRun> RunLimited(const std::string& program,
                                const std::vector<std::string>& arguments, os::Deadline deadline,
                                const os::ProcessLimits& limits) {
  const auto child = Start(program, arguments);
  if (!child) return child.Error();
  // One that has ended already needs none.
  static_cast<void>(os::LimitProcess(child->id, limits));
  LimitedRun run;
  const auto end = [&](const char* why) {
    static_cast<void>(os::Terminate(child->process.Get()));
    return FailureOf(program + " " + why);
  };
  for (;;) {
    const std::array handles{child->lines.Get()};
    if (os::WaitReadable(handles, deadline) != os::WaitSignaledBase)
      return end("has not ended in time");
    std::array<char, 4096> bytes;
    const std::size_t count =
        os::ReadSome(child->lines.Get(), bytes.data(), bytes.size()).ValueOr(0);
    if (count == 0) break;
    run.output.append(bytes.data(), count);
    if (run.output.size() > MaximumOutput) return end("wrote too much");
  }
  const std::array handles{child->process.Get()};
  if (os::WaitReadable(handles, deadline) != os::WaitSignaledBase)
    return end("has not ended in time");
  const auto state = os::TakeExitState(child->process.Get());
  if (!state) return state.Error();
  run.state = *state;
  return run;
}

}  // namespace rastrel::cli
