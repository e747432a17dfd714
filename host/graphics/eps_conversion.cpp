#include "host/graphics/eps_conversion.h"

#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/temporary_name.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/tree.h"

namespace rastrel::graphics {

namespace {

constexpr long NanosecondsPerMillisecond = 1'000'000;
constexpr std::size_t PipeSize = 65'536;
constexpr std::size_t MaximumWords = 4096;  // of what the interpreter says, from the end

struct Pipe {
  os::FileDescriptor reading;
  os::FileDescriptor writing;
};

Expected<Pipe> MakePipe() {
  HANDLE reading = INVALID_HANDLE_VALUE;
  HANDLE writing = INVALID_HANDLE_VALUE;
  if (!os::CreatePipe(reading, writing, PipeSize)) return Failure{"pipe", {}, errno};
  return Pipe{os::FileDescriptor(reading), os::FileDescriptor(writing)};
}

// A file without a name that holds the bytes: the interpreter goes back and forth in it.
Expected<os::FileDescriptor> FileOf(const std::string& bytes) {
  os::FileDescriptor file(os::Calls().memory_file("eps", MFD_CLOEXEC));
  if (!file.IsOpen()) return Failure{"memfd_create", {}, errno};
  if (!os::WriteAll(file.Get(), bytes)) return Failure{"write", {}, errno};
  return file;
}

std::string FindInterpreter() {
  const std::string search = os::EnvironmentValue("PATH");
  std::string_view rest = search;
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    std::string candidate = std::string(rest.substr(0, end)) + "/gs";
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (candidate.front() == '/' && os::FileSize(os::FromNative(candidate)) > 0) return candidate;
  }
  return {};
}

using Box = std::array<double, 4>;

// Four numbers with blanks before them.
std::optional<Box> BoxFrom(std::string_view text) {
  Box box;
  for (double& side : box) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return std::nullopt;
    text.remove_prefix(begin);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || !std::isfinite(side)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  return box[0] < box[2] && box[1] < box[3] ? std::optional(box) : std::nullopt;
}

// The last box that a comment gives.
std::optional<Box> LastBox(std::string_view file, std::string_view comment) {
  std::size_t place = file.rfind(comment);
  while (place != std::string_view::npos) {
    const std::string_view line = file.substr(place, file.find_first_of("\r\n", place) - place);
    if (const auto box = BoxFrom(line.substr(comment.size()))) return box;
    if (place == 0) break;
    place = file.rfind(comment, place - 1);
  }
  return std::nullopt;
}

// The box of a file that only says at its end how large it is: too late for the interpreter, which
// then takes a sheet of paper. Nothing where the beginning says it.
std::optional<Box> BoxAtEnd(std::string_view file) {
  constexpr std::string_view comment = "%%BoundingBox:";
  const std::size_t first = file.find(comment);
  if (first == std::string_view::npos) return std::nullopt;
  std::string_view value = file.substr(first + comment.size());
  value = value.substr(0, value.find_first_of("\r\n"));
  if (value.find("(atend)") == std::string_view::npos) return std::nullopt;
  const auto fine = LastBox(file, "%%HiResBoundingBox:");
  return fine ? fine : LastBox(file, comment);
}

std::string Text(double number) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 4);
  return {text, end.ec == std::errc() ? end.ptr : text};
}

std::vector<std::string> Arguments(const ConversionLimits& limits, const std::optional<Box>& box) {
  std::vector<std::string> arguments{"gs",
                                     "-q",
                                     "-dBATCH",
                                     "-dNOPAUSE",
                                     "-dSAFER",
                                     "-K" + std::to_string(limits.memoryKibibytes),
                                     "-sDEVICE=pdfwrite",
                                     "-sstdout=%stderr",
                                     "-sOutputFile=%stdout"};
  if (box) {
    const auto& [left, bottom, right, top] = *box;
    arguments.insert(arguments.end(), {"-dFIXEDMEDIA", "-dDEVICEWIDTHPOINTS=" + Text(right - left),
                                       "-dDEVICEHEIGHTPOINTS=" + Text(top - bottom), "-c",
                                       "<</Install {" + Text(-left) + " " + Text(-bottom) +
                                           " translate}>> setpagedevice"});
  } else {
    arguments.emplace_back("-dEPSCrop");
  }
  arguments.insert(arguments.end(), {"-f", "/dev/fd/0"});
  return arguments;
}

// A folder for the interpreter's own files, which goes with what is in it. A file that it
// interprets may read and write there, and only there.
class TemporaryFolder {
 public:
  [[nodiscard]] static Expected<TemporaryFolder> Make() {
    const std::string place = os::EnvironmentValue("TMPDIR");
    const std::string base = place.starts_with('/') ? place : "/tmp";
    auto path = os::CompleteTemporaryName(os::FromNative(base + "/rastrel-XXXXXX"));
    if (!path) return path.Error();
    if (!os::MakeDirectory(*path)) return Failure{"mkdir", os::ToNative(*path), errno};
    return TemporaryFolder(std::move(*path));
  }
  ~TemporaryFolder() {
    if (!m_Path.empty()) static_cast<void>(os::RemoveTree(m_Path));
  }
  TemporaryFolder(TemporaryFolder&& other) noexcept : m_Path(std::exchange(other.m_Path, {})) {}
  TemporaryFolder& operator=(TemporaryFolder&&) = delete;
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] std::string Path() const { return os::ToNative(m_Path); }

 private:
  explicit TemporaryFolder(std::wstring path) : m_Path(std::move(path)) {}
  std::wstring m_Path;
};

// Settings of the user's that would change the interpreter's options stay outside.
std::vector<std::string> Environment(const TemporaryFolder& folder) {
  std::vector<std::string> environment{"LC_ALL=C", "TMPDIR=" + folder.Path(),
                                       "TEMP=" + folder.Path()};
  for (const char* const name : {"PATH", "HOME", "FONTCONFIG_FILE", "FONTCONFIG_PATH"}) {
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
  Expected<os::ExitState> End() {
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
      return os::WideFromUtf8(Describe({"poll", {}, errno}));
    }
    if (waited[0].revents != 0 && !Take(streams.picture, streams.pictureBytes)) {
      streams.picture.Reset();
    }
    if (waited[1].revents != 0 && !Take(streams.words, streams.wordBytes)) streams.words.Reset();
    ended = ended || waited[2].revents != 0;
    if (streams.pictureBytes.size() > limits.bytes) {
      return L"the interpreter made more than " + std::to_wstring(limits.bytes) + L" bytes of it";
    }
    if (streams.wordBytes.size() > 2 * MaximumWords) {
      streams.wordBytes.erase(0, streams.wordBytes.size() - MaximumWords);
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

std::wstring Refused(const Failure& failure) {
  return L"the interpreter can't be started: " + os::WideFromUtf8(Describe(failure));
}

}  // namespace

os::ExpectedOr<std::string, std::wstring> PdfFromEps(const std::string& bytes,
                                                     const ConversionLimits& limits) {
  const std::string program = FindInterpreter();
  if (program.empty()) {
    return std::wstring(L"Ghostscript is needed for EPS, and there is no program gs on PATH");
  }
  const auto folder = TemporaryFolder::Make();
  if (!folder) return Refused(folder.Error());
  auto input = FileOf(bytes);
  if (!input) return Refused(input.Error());
  auto picture = MakePipe();
  if (!picture) return Refused(picture.Error());
  auto words = MakePipe();
  if (!words) return Refused(words.Error());
  auto child = os::Spawn({program,
                          Arguments(limits, BoxAtEnd(bytes)),
                          Environment(*folder),
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
  if (!end) return os::WideFromUtf8(Describe(end.Error()));
  if (!end->byItself || end->status != 0 || streams.pictureBytes.empty()) {
    return L"the interpreter ended with " + std::to_wstring(end->status) + L": " +
           WordsOf(streams.wordBytes);
  }
  return streams.pictureBytes;
}

}  // namespace rastrel::graphics
