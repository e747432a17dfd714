#include "host/graphics/eps_conversion.h"

#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::graphics {

namespace {

constexpr long NanosecondsPerMillisecond = 1'000'000;
constexpr std::size_t PipeSize = 65'536;
constexpr std::size_t MostWords = 4096;  // of what the interpreter says, from the end

struct Pipe {
  os::FileDescriptor reading;
  os::FileDescriptor writing;
};

os::Outcome<Pipe> MakePipe() {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  if (!os::CreatePipe(reading, writing, PipeSize)) return os::Failure{"pipe", {}, errno};
  return Pipe{os::FileDescriptor(reading), os::FileDescriptor(writing)};
}

// A file without a name that holds the bytes: the interpreter goes back and forth in it.
os::Outcome<os::FileDescriptor> FileOf(const std::string& bytes) {
  os::FileDescriptor file(os::Calls().memory_file("eps", MFD_CLOEXEC));
  if (!file.IsOpen()) return os::Failure{"memfd_create", {}, errno};
  if (!os::WriteAll(file.Get(), bytes)) return os::Failure{"write", {}, errno};
  return file;
}

std::string FindInterpreter() {
  const std::string search = os::EnvironmentValue("PATH");
  std::string_view rest = search;
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    const std::string candidate = std::string(rest.substr(0, end)) + "/gs";
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (candidate.front() == '/' && os::FileSize(os::FromNative(candidate)) > 0) return candidate;
  }
  return {};
}

std::vector<std::string> Arguments(const ConversionLimits& limits) {
  return {"gs",
          "-q",
          "-dBATCH",
          "-dNOPAUSE",
          "-dSAFER",
          "-dEPSCrop",
          "-K" + std::to_string(limits.memoryKibibytes),
          "-sDEVICE=pdfwrite",
          "-sstdout=%stderr",
          "-sOutputFile=%stdout",
          "-f",
          "/dev/fd/0"};
}

// Settings of the user's that would change the interpreter's options stay outside.
std::vector<std::string> Environment() {
  std::vector<std::string> environment{"LC_ALL=C"};
  for (const char* const name : {"PATH", "HOME", "TMPDIR", "FONTCONFIG_FILE", "FONTCONFIG_PATH"}) {
    const std::string value = os::EnvironmentValue(name);
    if (!value.empty()) environment.push_back(std::string(name) + "=" + value);
  }
  return environment;
}

// The running interpreter, which does not outlive this.
class Interpreter {
 public:
  explicit Interpreter(os::ChildProcess child) : m_Process(child.process) {}
  ~Interpreter() {
    if (!m_Ended) static_cast<void>(os::Terminate(m_Process.Get()));
  }
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  // How it ended, after its output did. Killed if it goes on all the same.
  os::Outcome<os::ExitState> End() {
    m_Ended = true;
    return os::Terminate(m_Process.Get());
  }
  [[nodiscard]] int Descriptor() const { return m_Process.Get(); }

 private:
  os::FileDescriptor m_Process;
  bool m_Ended = false;
};

// Reads what there is into a text. False at the end.
bool Take(const os::FileDescriptor& source, std::string& text) {
  std::array<char, PipeSize> buffer;
  const long count = os::ReadSome(source.Get(), buffer.data(), buffer.size());
  if (count <= 0) return false;
  text.append(buffer.data(), static_cast<std::size_t>(count));
  return true;
}

struct Streams {
  os::FileDescriptor picture;
  os::FileDescriptor words;
  std::string pictureBytes;
  std::string wordBytes;
};

// Reads both streams to their ends, and waits for the process; or says why it did not.
std::wstring ReadStreams(Streams& streams, const Interpreter& interpreter,
                         const ConversionLimits& limits) {
  const long end = os::MonotonicNanoseconds() + limits.time.count() * NanosecondsPerMillisecond;
  bool ended = false;
  while (!ended || streams.picture.IsOpen() || streams.words.IsOpen()) {
    const long now = os::MonotonicNanoseconds();
    if (now >= end) {
      return L"the interpreter took more than " + std::to_wstring(limits.time.count()) +
             L" milliseconds";
    }
    // A descriptor of -1 is passed over.
    std::array<pollfd, 3> waited{pollfd{streams.picture.Get(), POLLIN, 0},
                                 pollfd{streams.words.Get(), POLLIN, 0},
                                 pollfd{ended ? -1 : interpreter.Descriptor(), POLLIN, 0}};
    const auto milliseconds = static_cast<int>((end - now) / NanosecondsPerMillisecond + 1);
    if (os::Calls().poll(waited.data(), waited.size(), milliseconds) < 0 && errno != EINTR) {
      return os::WideFromUtf8(os::Describe({"poll", {}, errno}));
    }
    if (waited[0].revents != 0 && !Take(streams.picture, streams.pictureBytes)) {
      streams.picture.Reset();
    }
    if (waited[1].revents != 0 && !Take(streams.words, streams.wordBytes)) streams.words.Reset();
    ended = ended || waited[2].revents != 0;
    if (streams.pictureBytes.size() > limits.bytes) {
      return L"the interpreter made more than " + std::to_wstring(limits.bytes) + L" bytes of it";
    }
    if (streams.wordBytes.size() > 2 * MostWords) {
      streams.wordBytes.erase(0, streams.wordBytes.size() - MostWords);
    }
  }
  return {};
}

// The first line that tells of an error, or the last.
std::wstring WordsOf(const std::string& text) {
  std::string_view rest = text;
  std::string_view last;
  while (!rest.empty()) {
    const std::size_t end = rest.find_first_of("\r\n");
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.find("Error:") != std::string_view::npos) return os::WideFromUtf8(line);
    if (!line.empty()) last = line;
  }
  return os::WideFromUtf8(last);
}

std::wstring Refused(const os::Failure& failure) {
  return L"the interpreter can't be started: " + os::WideFromUtf8(os::Describe(failure));
}

}  // namespace

os::Expected<std::string, std::wstring> PdfFromEps(const std::string& bytes,
                                                   const ConversionLimits& limits) {
  const std::string program = FindInterpreter();
  if (program.empty()) {
    return std::wstring(L"Ghostscript is needed for EPS, and there is no program gs on PATH");
  }
  auto input = FileOf(bytes);
  if (!input) return Refused(input.Error());
  auto picture = MakePipe();
  if (!picture) return Refused(picture.Error());
  auto words = MakePipe();
  if (!words) return Refused(words.Error());
  auto child = os::Spawn({program,
                          Arguments(limits),
                          Environment(),
                          {},
                          input->Get(),
                          picture->writing.Get(),
                          words->writing.Get()});
  if (!child) return Refused(child.Error());
  Interpreter interpreter(*child);
  picture->writing.Reset();
  words->writing.Reset();
  Streams streams{std::move(picture->reading), std::move(words->reading), {}, {}};
  const std::wstring reason = ReadStreams(streams, interpreter, limits);
  if (!reason.empty()) return reason;
  const auto end = interpreter.End();
  if (!end) return os::WideFromUtf8(os::Describe(end.Error()));
  if (!end->byItself || end->status != 0 || streams.pictureBytes.empty()) {
    return L"the interpreter ended with " + std::to_wstring(end->status) + L": " +
           WordsOf(streams.wordBytes);
  }
  return streams.pictureBytes;
}

}  // namespace rastrel::graphics
