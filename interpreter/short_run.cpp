#include "interpreter/short_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

#include "interpreter/disk_use.h"
#include "interpreter/ghostscript.h"
#include "interpreter/settings.h"
#include "interpreter/warm_start.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/shown_text.h"
#include "rastrel/platform/os/system_calls.h"

namespace rastrel::interpreter {
namespace {

// A disk takes a gigabyte in a second, so a job can go that share of it beyond the limit.
constexpr std::chrono::milliseconds LookInterval{100};
constexpr std::size_t PipeSize = 65'536;
constexpr std::size_t MaximumMessages = 4096;
// The place's directory as the interpreter sees it: a name that is the same for every run.
constexpr const char* TemporaryName = "/dev/fd/3";
constexpr std::size_t MaximumLine = 500;  // bytes of a line that a person reads

// Appends the bytes that wait in the pipe. False at its end.
bool Take(const os::FileDescriptor& source, std::string& text) {
  std::array<char, PipeSize> buffer;
  const std::size_t count = os::ReadSome(source.Get(), buffer.data(), buffer.size()).ValueOr(0);
  text.append(buffer.data(), count);
  return count > 0;
}

// An interpreter on its way, with this process's ends of its pipes.
struct Running {
  GuardedProcess process;
  os::FileDescriptor output;
  os::FileDescriptor messages;
};

// A file that starts count for. Without one the run is a check of the interpreter's own start.
bool IsSmall(int input) {
  struct stat state {};
  return input >= 0 && fstat(input, &state) == 0 &&
         static_cast<std::uint64_t>(state.st_size) <= WarmJobBytes;
}

std::uint64_t SecondsOf(std::chrono::milliseconds time) {
  return static_cast<std::uint64_t>(std::chrono::ceil<std::chrono::seconds>(time).count()) + 1;
}

Expected<Running> Start(const ShortRun& run, TaskPlace& place) {
  os::Pipe output;
  if (run.outputLimit > 0) {
    auto made = os::MakePipe(PipeSize);
    if (!made) return made.Error();
    output = std::move(*made);
  }
  auto messages = os::MakePipe(PipeSize);
  if (!messages) return messages.Error();
  const os::FileDescriptor temporary(
      open(place.Directory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!temporary.IsOpen()) return Failure{"open", place.Directory(), errno};
  GhostscriptRequest request;
  request.program = run.program;
  request.arguments = run.arguments;
  request.temporary = TemporaryName;
  request.directory = place.Directory();
  request.descriptors = {run.input, output.writing.Get(), messages->writing.Get(), temporary.Get()};
  request.isSmall = IsSmall(run.input);
  request.limits = {SecondsOf(run.time), run.memoryKibibytes, run.workBytes};
  request.files = run.files;
  request.files.push_back({place.Directory(), WallAccess::Write});
  if (run.input >= 0) request.files.push_back({{}, WallAccess::Read, run.input});
  auto process = StartGhostscript(request, place.Guard());
  if (!process) return process.Error();
  return Running{std::move(*process), std::move(output.reading), std::move(messages->reading)};
}

// The user's limits of runs hold for tasks, where they are lower. Complaints about them are left to
// those runs.
ShortRun WithinSettings(ShortRun run) {
  std::vector<std::string> complaints;
  const Settings settings = Settings::FromEnvironment(complaints);
  if (settings.timeSeconds < SecondsOf(run.time)) {
    run.time = std::min(run.time, std::chrono::milliseconds(settings.timeSeconds * 1000));
  }
  run.memoryKibibytes = std::min(run.memoryKibibytes, settings.memoryMebibytes * 1024);
  run.workBytes = std::min(run.workBytes, settings.workMebibytes << 20);
  return run;
}

Failure TooManyFiles(const ShortRun& run) {
  return FailureOf("the interpreter's files take more than " + std::to_string(run.workBytes >> 20) +
                   " MiB, or are more than " + std::to_string(run.workFiles));
}

std::string TextOf(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  if (seconds != time) return std::to_string(time.count()) + " milliseconds";
  return std::to_string(seconds.count()) + (seconds.count() == 1 ? " second" : " seconds");
}

// The limits of one run that the kernel does not hold.
class Limits {
 public:
  Limits(const ShortRun& run, const std::string& directory, pid_t interpreter)
      : m_Run(run),
        m_Directory(directory),
        m_Interpreter(interpreter),
        m_Deadline(os::Deadline::After(run.time)) {}

  // Milliseconds until the next look, for poll().
  [[nodiscard]] int Wait() const {
    return std::min(m_Deadline.PollTimeout(), m_NextLook.PollTimeout());
  }

  // Looks at the clock, and now and then at the files.
  [[nodiscard]] Expected<void> Check() {
    if (m_Deadline.HasPassed()) {
      return FailureOf("the interpreter took more than " + TextOf(m_Run.time));
    }
    if (!m_NextLook.HasPassed()) return {};
    m_NextLook = os::Deadline::After(LookInterval);
    const DiskUse named = UseOf(m_Directory);
    const DiskUse anonymous = UseOfAnonymous(m_Interpreter);
    if (named.bytes + anonymous.bytes > m_Run.workBytes || named.files > m_Run.workFiles) {
      return TooManyFiles(m_Run);
    }
    return {};
  }

 private:
  const ShortRun& m_Run;
  const std::string& m_Directory;
  pid_t m_Interpreter;
  os::Deadline m_Deadline;
  os::Deadline m_NextLook = os::Deadline::After(LookInterval);
};

// Reads both pipes to their ends and waits for the process.
Expected<void> Read(Running& running, const ShortRun& run, Limits& limits, ShortRunEnd& result) {
  bool ended = false;
  while (!ended || running.output.IsOpen() || running.messages.IsOpen()) {
    if (const auto checked = limits.Check(); !checked) return checked;
    // A descriptor of -1 is passed over.
    std::array<pollfd, 3> waited{pollfd{running.output.Get(), POLLIN, 0},
                                 pollfd{running.messages.Get(), POLLIN, 0},
                                 pollfd{ended ? -1 : running.process.Descriptor(), POLLIN, 0}};
    if (os::Calls().poll(waited.data(), waited.size(), limits.Wait()) < 0 && errno != EINTR) {
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

std::string PlainLine(std::string_view bytes) {
  const std::string_view line = bytes.substr(0, MaximumLine);
  return os::CleanLine(line.substr(0, os::WholeCharacters(line)));
}

std::string ErrorLineOf(const std::string& text) {
  std::string_view rest = text;
  std::string_view last;
  while (!rest.empty()) {
    const std::size_t end = rest.find_first_of("\r\n");
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.find("Error:") != std::string_view::npos) return PlainLine(line);
    if (!line.empty()) last = line;
  }
  return PlainLine(last);
}

std::string ReasonOfEnd(const ShortRunEnd& run) {
  if (run.end.byItself && run.end.status == 0) return {};
  const std::string line = ErrorLineOf(run.messages);
  if (!line.empty()) return line;
  return "it ended with " + std::string(run.end.byItself ? "status " : "signal ") +
         std::to_string(run.end.status);
}

Expected<ShortRunEnd> RunToEnd(const ShortRun& requested, TaskPlace& place) {
  const ShortRun run = WithinSettings(requested);
  auto running = Start(run, place);
  if (!running) return NotStarted(running.Error());
  ShortRunEnd result;
  Limits limits(run, place.Directory(), running->process.Number());
  if (const auto read = Read(*running, run, limits, result); !read) return read.Error();
  const auto end = running->process.Wait();
  if (!end) return end.Error();
  result.end = *end;
  if (!end->byItself && end->status == SIGXFSZ) return TooManyFiles(run);
  return result;
}

}  // namespace rastrel::interpreter
