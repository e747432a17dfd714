#include "interpreter/short_run.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "interpreter/ghostscript.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t PipeSize = 65'536;
constexpr std::size_t MaximumMessages = 4096;

struct Pipe {
  os::FileDescriptor reading;
  os::FileDescriptor writing;
};

Expected<Pipe> MakePipe() {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  if (const auto made = os::CreatePipe(reading, writing, PipeSize); !made) return made.Error();
  return Pipe{os::FileDescriptor(reading), os::FileDescriptor(writing)};
}

// Appends the bytes that wait in the pipe. False at its end.
bool Take(const os::FileDescriptor& source, std::string& text) {
  std::array<char, PipeSize> buffer;
  const std::size_t count = os::ReadSome(source.Get(), buffer.data(), buffer.size()).ValueOr(0);
  text.append(buffer.data(), count);
  return count > 0;
}

// An interpreter on its way, with this process's ends of its pipes.
struct Running {
  GhostscriptProcess process;
  os::FileDescriptor output;
  os::FileDescriptor messages;
};

Expected<Running> Start(const ShortRun& run) {
  Pipe output;
  if (run.outputLimit > 0) {
    auto made = MakePipe();
    if (!made) return made.Error();
    output = std::move(*made);
  }
  auto messages = MakePipe();
  if (!messages) return messages.Error();
  GhostscriptRequest request;
  request.program = run.program;
  request.arguments = run.arguments;
  request.temporary = run.temporary;
  request.directory = run.directory;
  request.descriptors = {run.input, output.writing.Get(), messages->writing.Get()};
  auto process = StartGhostscript(request, nullptr);
  if (!process) return process.Error();
  return Running{std::move(*process), std::move(output.reading), std::move(messages->reading)};
}

// Reads both pipes to their ends and waits for the process.
Expected<void> Read(Running& running, const ShortRun& run, ShortRunEnd& result) {
  const auto deadline = os::Deadline::After(run.time);
  bool ended = false;
  while (!ended || running.output.IsOpen() || running.messages.IsOpen()) {
    if (deadline.HasPassed()) {
      return FailureOf("the interpreter took more than " + std::to_string(run.time.count()) +
                       " milliseconds");
    }
    // A descriptor of -1 is passed over.
    std::array<pollfd, 3> waited{pollfd{running.output.Get(), POLLIN, 0},
                                 pollfd{running.messages.Get(), POLLIN, 0},
                                 pollfd{ended ? -1 : running.process.Descriptor(), POLLIN, 0}};
    if (os::Calls().poll(waited.data(), waited.size(), deadline.PollTimeout()) < 0 &&
        errno != EINTR) {
      return Failure{"poll", {}, errno};
    }
    if (waited[0].revents != 0 && !Take(running.output, result.output)) running.output.Reset();
    if (waited[1].revents != 0 && !Take(running.messages, result.messages)) {
      running.messages.Reset();
    }
    ended = ended || waited[2].revents != 0;
    if (result.output.size() > run.outputLimit) {
      return FailureOf("the interpreter made more than " + std::to_string(run.outputLimit) +
                       " bytes of it");
    }
    if (result.messages.size() > 2 * MaximumMessages) {
      result.messages.erase(0, result.messages.size() - MaximumMessages);
    }
  }
  return {};
}

}  // namespace

Failure NotStarted(const Failure& failure) {
  return FailureOf("the interpreter can't be started: " + Describe(failure));
}

Expected<ShortRunEnd> RunToEnd(const ShortRun& run) {
  auto running = Start(run);
  if (!running) return NotStarted(running.Error());
  ShortRunEnd result;
  const auto read = Read(*running, run, result);
  if (!read) return read.Error();
  const auto end = running->process.Wait();
  if (!end) return end.Error();
  result.end = *end;
  return result;
}

}  // namespace rastrel::interpreter
