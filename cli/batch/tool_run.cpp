#include "cli/batch/tool_run.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/native_file.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PipeSize = 65'536;
constexpr std::size_t MaximumText = std::size_t{1} << 20;
constexpr std::chrono::milliseconds StopInterval{100};

// One of the tool's streams. Bytes beyond the limit are read, so that it never waits, and lost.
class Stream {
 public:
  [[nodiscard]] Expected<void> Open() {
    auto made = os::MakePipe(PipeSize);
    if (!made) return made.Error();
    m_Pipe = *std::move(made);
    return {};
  }
  [[nodiscard]] os::FileDescriptor& Writing() { return m_Pipe.writing; }
  [[nodiscard]] HANDLE Reading() const { return m_Pipe.reading.Get(); }
  [[nodiscard]] std::string& Text() { return m_Text; }

  void Take() {
    std::array<char, PipeSize> bytes;
    const auto got = os::ReadSome(m_Pipe.reading.Get(), bytes.data(), bytes.size());
    const std::size_t count = got.ValueOr(0);
    if (count == 0) return m_Pipe.reading.Reset();
    m_Text.append(bytes.data(), std::min(count, MaximumText - m_Text.size()));
  }

 private:
  os::Pipe m_Pipe;
  std::string m_Text;
};

Expected<os::FileDescriptor> Start(const std::string& program,
                                   const std::vector<std::string>& arguments, Stream& output,
                                   Stream& error) {
  for (Stream* stream : {&output, &error})
    if (const auto opened = stream->Open(); !opened) return opened.Error();
  const auto nothing = os::OpenForReading(L"/dev/null");
  if (!nothing) return nothing.Error();
  os::SpawnRequest request;
  request.executable = program;
  request.arguments = {program};
  request.arguments.insert(request.arguments.end(), arguments.begin(), arguments.end());
  request.environment = os::EnvironmentEntries();
  request.standardInput = nothing->Get();
  request.standardOutput = output.Writing().Get();
  request.standardError = error.Writing().Get();
  const auto child = os::Spawn(request);
  if (!child) return child.Error();
  output.Writing().Reset();
  error.Writing().Reset();
  return os::FileDescriptor(child->process);
}

}  // namespace

Expected<ToolEnd> RunTool(const std::string& program, const std::vector<std::string>& arguments,
                          std::chrono::milliseconds limit, const std::function<bool()>& isStopped) {
  Stream output;
  Stream error;
  const auto process = Start(program, arguments, output, error);
  if (!process) return process.Error();
  const auto deadline = os::Deadline::After(limit);
  for (;;) {
    // Its end comes last, so that all that it wrote is taken before. A process that it left may
    // hold the streams open: it is not waited for.
    const std::array handles{output.Reading(), error.Reading(), process->Get()};
    const std::uint32_t ready = os::WaitReadable(handles, os::Deadline::After(StopInterval));
    if (ready == os::WaitSignaledBase) output.Take();
    if (ready == os::WaitSignaledBase + 1) error.Take();
    if (ready == os::WaitSignaledBase + 2) break;
    const bool isStopping = isStopped();
    if (!isStopping && !deadline.HasPassed() && ready != os::WaitFailed) continue;
    static_cast<void>(os::Terminate(process->Get()));
    os::ReleaseEndedChildren();
    if (isStopping) return Failure{"run", program, ECANCELED};
    return FailureOf("'" + program + "' did not end within " +
                     std::to_string(std::chrono::ceil<std::chrono::seconds>(limit).count()) +
                     " seconds");
  }
  const auto end = os::TakeExitState(process->Get());
  os::ReleaseEndedChildren();
  if (!end) return end.Error();
  return ToolEnd{end->byItself, end->status, std::move(output.Text()), std::move(error.Text())};
}

}  // namespace rastrel::cli
