#include "host/graphics/drawing_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <utility>

#include "host/document/notices.h"
#include "host/graphics/picture.h"
#include "rastrel/platform/os/deadline.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/platform/standalone/data_root.h"

namespace rastrel::graphics {

namespace {

constexpr const char* ProgramName = "rastrel-draw";
constexpr std::size_t PipeSize = 65'536;

// Beside this program, or where the reference children lie.
std::string FindDrawingProgram() {
  const std::string own = os::ExecutablePath();
  const std::array folders{own.substr(0, own.rfind('/')), standalone::FindResources().programs};
  for (const std::string& folder : folders) {
    const std::string program = folder + "/" + ProgramName;
    if (!folder.empty() && os::Exists(os::FromNative(program))) return program;
  }
  return {};
}

// The variables that fonts are found by, and those of sanitizers.
bool IsPassedOn(std::string_view entry) {
  constexpr std::string_view passed[] = {"HOME=", "LANG=",   "LC_",   "XDG_",  "FONTCONFIG_",
                                         "FC_",   "TMPDIR=", "ASAN_", "TSAN_", "UBSAN_"};
  return std::ranges::any_of(passed,
                             [&](std::string_view name) { return entry.starts_with(name); });
}

std::string SecondsText(std::chrono::seconds time) {
  return std::to_string(time.count()) + (time.count() == 1 ? " second" : " seconds");
}

// The running program. It is killed and its end taken over with this object.
class DrawingProcess {
 public:
  DrawingProcess(os::ChildProcess child, os::FileDescriptor output)
      : m_Process(child.process), m_Output(std::move(output)) {}
  ~DrawingProcess() {
    if (m_Process.IsOpen() && !m_Ended) static_cast<void>(os::Terminate(m_Process.Get()));
    os::ReleaseEndedChildren();
  }
  DrawingProcess(DrawingProcess&&) noexcept = default;
  DrawingProcess& operator=(DrawingProcess&&) = delete;
  DrawingProcess(const DrawingProcess&) = delete;
  DrawingProcess& operator=(const DrawingProcess&) = delete;

  [[nodiscard]] HANDLE Output() const { return m_Output.Get(); }
  // Its end, which has come or is about to: it has closed its output. If the end doesn't come, it
  // is killed.
  [[nodiscard]] Expected<os::ExitState> End(const os::Deadline& deadline) {
    const std::uint32_t waited = os::WaitReadable(std::array{HANDLE{m_Process.Get()}}, deadline);
    m_Ended = true;
    return waited == os::WaitTimeout || waited == os::WaitFailed
               ? os::Terminate(m_Process.Get())
               : os::TakeExitState(m_Process.Get());
  }

 private:
  os::FileDescriptor m_Process;
  os::FileDescriptor m_Output;
  bool m_Ended = false;
};

// Starts the program: the one place where that happens.
Expected<DrawingProcess> Start(const std::vector<std::string>& task, const std::string& input,
                               const DrawingLimits& limits) {
  os::SpawnRequest request;
  request.executable = FindDrawingProgram();
  if (request.executable.empty()) {
    return FailureOf(std::string("the program ") + ProgramName +
                     " is missing, which draws placed files; install Rastrel anew");
  }
  request.arguments = {ProgramName, std::to_string(limits.fileTime.count()),
                       std::to_string(limits.time.count()), std::to_string(limits.memory)};
  request.arguments.insert(request.arguments.end(), task.begin(), task.end());
  for (std::string& entry : os::EnvironmentEntries()) {
    if (IsPassedOn(entry)) request.environment.push_back(std::move(entry));
  }
  request.directory = "/";
  auto output = os::MakePipe(PipeSize);
  if (!output) return output.Error();
  HANDLE inputRead = INVALID_HANDLE_VALUE;
  HANDLE inputWrite = INVALID_HANDLE_VALUE;
  if (auto made = os::CreateInput(inputRead, inputWrite, input); !made) return made.Error();
  const os::FileDescriptor childInput(inputRead);
  const os::FileDescriptor ownInput(inputWrite);
  request.standardInput = inputRead;
  request.standardOutput = output->writing.Get();
  auto child = os::Spawn(request);
  if (!child) return child.Error();
  DrawingProcess process(*child, std::move(output->reading));
  // A program that has ended already says by its end why.
  static_cast<void>(os::WriteInput(inputWrite, input));
  return process;
}

// A failure as the program says it, perhaps with text of a foreign file.
Failure CleanFailure(const std::string& text) {
  return FailureOf(os::Utf8FromWide(document::CleanMessage(os::WideFromUtf8(text))));
}

// One run: the stream of records as it comes.
class DrawingRun {
 public:
  DrawingRun(const std::string& subject, const DrawingLimits& limits, const TakeRecord& take)
      : m_Subject(subject), m_Limits(limits), m_Take(take) {}

  [[nodiscard]] Expected<void> Read(DrawingProcess& process);

 private:
  [[nodiscard]] Expected<void> TakeAll();
  [[nodiscard]] Expected<void> TakeOne(DrawingRecord kind, std::string body);
  [[nodiscard]] Failure NotDrawn(const std::string& why) const;
  [[nodiscard]] std::string ReasonOf(const os::ExitState& end) const;

  const std::string& m_Subject;
  const DrawingLimits& m_Limits;
  const TakeRecord& m_Take;
  std::string m_Bytes;                // of the records that are not yet taken
  std::uint64_t m_Total = 0;          // bytes since the last image
  std::optional<std::string> m_File;  // the foreign file that it is at
  std::string m_LastFile;
  bool m_Done = false;
};

Failure DrawingRun::NotDrawn(const std::string& why) const {
  if (m_Subject.empty()) return CleanFailure(why);
  if (m_File) return CleanFailure("the placed file \"" + *m_File + "\" can't be drawn: " + why);
  const std::string with = m_LastFile.empty() ? "" : " with the placed file \"" + m_LastFile + "\"";
  return CleanFailure(m_Subject + with + " can't be drawn: " + why);
}

std::string DrawingRun::ReasonOf(const os::ExitState& end) const {
  if (end.byItself) {
    return "the program that draws it ended with status " + std::to_string(end.status);
  }
  if (end.status != SIGXCPU) {
    return "the program that draws it was ended by signal " + std::to_string(end.status);
  }
  const auto seconds = m_File ? m_Limits.fileTime : m_Limits.time;
  return "drawing it takes more than " + SecondsText(seconds) + " of processor time";
}

Expected<void> DrawingRun::TakeOne(DrawingRecord kind, std::string body) {
  switch (kind) {
    case DrawingRecord::FileBegun:
      m_LastFile = body;
      m_File = std::move(body);
      return {};
    case DrawingRecord::FileEnded: m_File.reset(); return {};
    case DrawingRecord::Done: m_Done = true; return {};
    case DrawingRecord::Broken: return NotDrawn(body);
    case DrawingRecord::Failed: return m_File ? NotDrawn(body) : CleanFailure(body);
    case DrawingRecord::Notice:
    case DrawingRecord::Loss:
    case DrawingRecord::Size:
    case DrawingRecord::Path:
    case DrawingRecord::Extent:
    case DrawingRecord::Kept:
    case DrawingRecord::Number:
    case DrawingRecord::Image: return m_Take(kind, std::move(body));
  }
  return NotDrawn("the program that draws it writes no records");
}

// Takes the records that are whole.
Expected<void> DrawingRun::TakeAll() {
  std::size_t place = 0;
  while (m_Bytes.size() - place >= RecordHeadSize) {
    std::uint64_t length = 0;
    for (std::size_t i = RecordHeadSize - 1; i > 0; --i) {
      length = length << 8 | static_cast<unsigned char>(m_Bytes[place + i]);
    }
    if (length > m_Limits.resultBytes) {
      return NotDrawn("its drawing has more than " + std::to_string(m_Limits.resultBytes) +
                      " bytes");
    }
    if (m_Bytes.size() - place - RecordHeadSize < length) break;
    const auto kind = static_cast<DrawingRecord>(m_Bytes[place]);
    auto taken = TakeOne(kind, m_Bytes.substr(place + RecordHeadSize, length));
    if (!taken) return taken;
    place += RecordHeadSize + length;
    if (kind == DrawingRecord::Image) m_Total = m_Bytes.size() - place;
  }
  m_Bytes.erase(0, place);
  return {};
}

Expected<void> DrawingRun::Read(DrawingProcess& process) {
  std::string buffer(PipeSize, '\0');
  while (!m_Done) {
    const std::uint32_t waited =
        os::WaitReadable(std::array{process.Output()}, os::Deadline::After(m_Limits.silence));
    if (waited == os::WaitTimeout) {
      return NotDrawn("drawing it takes more than " + SecondsText(m_Limits.silence));
    }
    if (waited == os::WaitFailed) return Failure{"poll", "the drawing program", errno};
    const auto count = os::ReadSome(process.Output(), buffer.data(), buffer.size());
    if (!count) return count.Error();
    if (*count == 0) {
      const auto end = process.End(os::Deadline::After(m_Limits.silence));
      if (!end) return end.Error();
      return NotDrawn(ReasonOf(*end));
    }
    m_Total += *count;
    if (m_Total > m_Limits.resultBytes) {
      return NotDrawn("its drawing has more than " + std::to_string(m_Limits.resultBytes) +
                      " bytes");
    }
    m_Bytes.append(buffer.data(), *count);
    if (auto taken = TakeAll(); !taken) return taken;
  }
  return {};
}

Expected<std::string> PdfOfPictureArea(const std::string& bytes, interpreter::EpsLimits limits) {
  const auto begin = std::chrono::steady_clock::now();
  const auto area = interpreter::PictureArea(bytes, limits);
  if (!area) return area.Error();
  const auto used = std::chrono::steady_clock::now() - begin;
  limits.time = std::max(limits.time - std::chrono::duration_cast<std::chrono::milliseconds>(used),
                         std::chrono::milliseconds(0));
  return interpreter::PdfOfArea(bytes, *area, limits);
}

}  // namespace

Expected<void> RunDrawing(const std::vector<std::string>& task, const std::string& input,
                          const std::string& subject, const DrawingLimits& limits,
                          const TakeRecord& take) {
  auto process = Start(task, input, limits);
  if (!process) return process.Error();
  return DrawingRun(subject, limits, take).Read(*process);
}

Expected<DrawableFile> DrawableOf(document::GraphicKind kind,
                                  std::shared_ptr<const std::string> bytes,
                                  std::chrono::milliseconds time, interpreter::EpsLetters letters,
                                  EpsPart part) {
  if (!document::IsPostScript(kind)) return DrawableFile{kind, std::move(bytes)};
  if (bytes->size() > LargestGraphicFile) {
    return FailureOf("it has " + std::to_string(bytes->size()) + " bytes; " +
                     std::to_string(LargestGraphicFile) + " are the most");
  }
  interpreter::EpsLimits limits;
  limits.time = std::min(limits.time, time);
  auto converted = part == EpsPart::Area ? PdfOfPictureArea(*bytes, limits)
                                         : interpreter::PdfFromEps(*bytes, limits, letters);
  if (!converted) return converted.Error();
  return DrawableFile{document::GraphicKind::Pdf,
                      std::make_shared<const std::string>(std::move(*converted))};
}

}  // namespace rastrel::graphics
