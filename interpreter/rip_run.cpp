#include "interpreter/rip_run.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <limits>
#include <utility>

#include "interpreter/disk_use.h"
#include "interpreter/separations.h"
#include "rastrel/platform/os/clock.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t PixelBufferSize = 262144;
constexpr std::size_t WordBytes = 16;
constexpr double SeparationBytesPerPixel = 8;  // four planes and the composite of four
constexpr std::size_t TransferSize = 256;      // of a plane's table, a byte for each sample
constexpr std::int64_t NanosecondsPerSecond = 1000000000;
constexpr std::int64_t NanosecondsPerMillisecond = 1000000;
constexpr std::int64_t ProgressInterval = 50 * NanosecondsPerMillisecond;
// A disk takes a gigabyte in a second, so a job can go that share of it beyond the limit.
constexpr std::int64_t WatchInterval = 100 * NanosecondsPerMillisecond;
// A job that is not much longer than the pipe to the interpreter is sent before its first line
// runs.
constexpr std::uint64_t MeaningfulLength = 1 << 20;

// Two numbers with a blank between them.
bool ReadPair(const std::string& text, double& first, double& second) {
  const char* const end = text.data() + text.size();
  const auto one = std::from_chars(text.data(), end, first);
  if (one.ec != std::errc() || one.ptr == end || *one.ptr != ' ') return false;
  const auto other = std::from_chars(one.ptr + 1, end, second);
  return other.ec == std::errc() && other.ptr == end && first > 0 && second > 0;
}

std::string Whole(double value) { return std::to_string(static_cast<long long>(value)); }

}  // namespace

RipRun::RipRun(Parts parts, const RunDirectory& directory, Reporter& reporter, Guardian& guardian)
    : m_Parts(std::move(parts)),
      m_Directory(directory),
      m_Reporter(reporter),
      m_Guardian(guardian),
      m_Stream(*this),
      m_Pixels(PixelBufferSize) {
  m_Parts.description.cuts = &m_Cuts;
}

RipRun::~RipRun() = default;

void RipRun::Fail(ExitStatus status, std::string sentence) {
  if (!m_Failure) m_Failure = RunFailure{status, std::move(sentence)};
}

bool RipRun::FailOn(const Failure& failure) {
  Fail(ExitStatus::Failed, Describe(failure) + ".");
  return false;
}

std::optional<RunFailure> RipRun::Run() {
  if (Start()) {
    while (Step()) {
    }
    if (m_Failure || HasEnough()) m_Interpreter->process.Kill();
    JudgeEnd();
  }
  return m_Failure;
}

bool RipRun::Start() {
  InterpreterRequest request;
  request.program = FindGhostscript();
  if (request.program.empty()) {
    Fail(ExitStatus::Failed,
         "Ghostscript is not installed: there is no program gs on the search path.");
    return false;
  }
  m_Word = RandomDigits(WordBytes);
  if (m_Word.empty()) return FailOn({"getrandom", {}, errno});
  request.ripDirectory = m_Parts.ripDirectory;
  request.word = m_Word;
  request.kind = m_Parts.job.layout.kind;
  request.cutter = m_Parts.cutter;
  request.picture = m_Parts.picture;
  request.measure = m_Parts.measure;
  request.prefix = m_Parts.prefix.Get();
  const bool pdf = request.kind == JobKind::Pdf;
  if (pdf) request.pdf = m_Parts.job.file.Get();
  m_Deadline = os::MonotonicNanoseconds() + static_cast<std::int64_t>(std::min<std::uint64_t>(
                                                m_Parts.settings.timeSeconds, 1000000000)) *
                                                NanosecondsPerSecond;
  auto started = StartGhostscript(request, m_Directory, m_Parts.settings, m_Guardian);
  if (!started) return FailOn(started.Error());
  m_Interpreter.emplace(std::move(*started));
  m_Feed.emplace(m_Parts.job.file.Get(), m_Parts.job.layout.offset, m_Parts.job.layout.length,
                 std::move(m_Interpreter->job));
  return true;
}

// One round of waiting and working. False when there is nothing more to wait for.
bool RipRun::Step() {
  const bool streaming = m_Interpreter->pixels.IsOpen() || m_Interpreter->reports.IsOpen();
  if (m_Failure || HasEnough() || !streaming) return false;
  if (!Poll() || !CheckWork()) return false;
  // What was reported before a pixel was written stands in the pipe when the pixel has been read,
  // and one reading of ReadReports takes a pipe's whole content. So a page's reports are known
  // before its pixels count.
  if (!ReadPixels() || !ReadReports() || !TakePixels()) return false;
  if (m_Feed->Descriptor() >= 0 && !m_Feed->Send()) {
    Fail(ExitStatus::BadInput, "The job can't be read: " + DescribeError(errno) + ".");
    return false;
  }
  ShowProgress();
  return true;
}

bool RipRun::Poll() {
  const std::int64_t left = m_Deadline - os::MonotonicNanoseconds();
  if (left <= 0) {
    Fail(ExitStatus::Failed, "The job took longer than " +
                                 std::to_string(m_Parts.settings.timeSeconds) +
                                 " seconds and was ended (RASTREL_RIP_TIMEOUT).");
    return false;
  }
  // The interpreter writes pixels row by row. While they flow, a moment's rest lets the pipe gather
  // some, which costs either side far less than to be woken for each.
  const int pixels = m_Flowing ? -1 : m_Interpreter->pixels.Get();
  std::array<pollfd, 4> entries{{{m_Interpreter->reports.Get(), POLLIN, 0},
                                 {pixels, POLLIN, 0},
                                 {m_Feed->Descriptor(), POLLOUT, 0},
                                 {STDERR_FILENO, 0, 0}}};
  const auto patience = static_cast<int>(
      std::min<std::int64_t>(left / NanosecondsPerMillisecond + 1,
                             m_Flowing ? 1 : WatchInterval / NanosecondsPerMillisecond));
  if (poll(entries.data(), entries.size(), patience) < 0 && errno != EINTR) {
    return FailOn({"poll", {}, errno});
  }
  // A host that was killed can end nothing any more. Its pipe tells: no one reads it.
  if ((entries[3].revents & POLLERR) != 0) {
    Fail(ExitStatus::Failed, "Nobody reads the reports any more.");
    return false;
  }
  return true;
}

bool RipRun::ReadReports() {
  std::array<char, 65536> buffer;
  while (m_Interpreter->reports.IsOpen()) {
    const ssize_t count = read(m_Interpreter->reports.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) break;
    if (count < 0) return FailOn({"read", "the interpreter's messages", errno});
    if (count == 0) m_Interpreter->reports.Reset();
    m_Lines.Add({buffer.data(), static_cast<std::size_t>(count)});
    while (const auto line = m_Lines.Next()) HandleLine(*line);
    if (count == 0 && !m_Lines.Last().empty()) HandleLine(m_Lines.Last());
    // A flood of messages must not keep the pixels and the clock waiting.
    if (static_cast<std::size_t>(count) == buffer.size()) break;
  }
  return !m_Failure;
}

bool RipRun::ReadPixels() {
  if (!m_Interpreter->pixels.IsOpen()) return true;
  const ssize_t count = read(m_Interpreter->pixels.Get(), m_Pixels.data(), m_Pixels.size());
  m_Flowing = count > 0 && static_cast<std::size_t>(count) < m_Pixels.size();
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  if (count < 0) return FailOn({"read", "the interpreter's pixels", errno});
  m_PixelCount = static_cast<std::size_t>(count);
  return true;
}

bool RipRun::TakePixels() {
  if (!m_PixelCount) return true;
  const std::size_t count = *std::exchange(m_PixelCount, {});
  const bool taken =
      count == 0 ? m_Stream.Finish() : m_Stream.Add(std::span(m_Pixels).first(count));
  if (count == 0) m_Interpreter->pixels.Reset();
  if (!taken && !m_Stream.Problem().empty() && count > 0) {
    Fail(ExitStatus::Failed, "The interpreter's pixels can't be read: " + m_Stream.Problem() + ".");
  }
  return !m_Failure;
}

void RipRun::HandleLine(const std::string& line) {
  if (const auto report = ReadReport(line, m_Word)) {
    m_Reported = true;
    HandleReport(*report);
    return;
  }
  // Its older PDF code is chosen on purpose.
  if (line.find("legacy PDF interpreter") != line.npos) return;
  // Where systemdict stays open for the prolog, the interpreter begins with a warning of it.
  if (m_Parts.cutter && !m_Reported && !line.starts_with("Error: ")) return;
  if (line.starts_with("Error: ") && m_LastError.empty()) m_LastError = line.substr(7);
  m_Reporter.Text(line);
}

void RipRun::HandleReport(const Report& report) {
  RunDescription& run = m_Parts.description;
  if (report.key == "PRINTER") {
    run.printer = report.value;
    m_Reporter.Note("printer " + report.value);
  } else if (report.key == "MODE") {
    run.mode = report.value;
    m_Reporter.Note("print mode " + report.value);
  } else if (report.key == "NOMODE") {
    m_Reporter.Warning("The print mode " + report.value +
                       " is not installed; the page is made without it.");
  } else if (report.key == "RESOLUTION") {
    double x = 0;
    double y = 0;
    if (ReadPair(report.value, x, y)) {
      run.xResolution = x;
      run.yResolution = y;
    }
  } else if (report.key == "TRANSFER" && report.value.size() > TransferSize) {
    std::ranges::copy(std::string_view(report.value).substr(0, TransferSize),
                      run.transfers[report.value.substr(TransferSize)].begin());
  } else if (report.key == "WARNING") {
    m_Reporter.Warning(report.value);
  } else if (report.key == "LOG") {
    m_Reporter.Text(report.value);
  } else if (report.key == "SIZE") {
    m_Cuts.BeginPage();
    HandleSize(report.value);
  } else if (report.key == "PAGE") {
    ShowConverting();
    m_Cuts.EndPage();
    MakeSeparations(m_Ended++);
  } else if (report.key == "BOX") {
    if (m_Box.empty()) m_Box = report.value;
  } else if (report.key == "JOB") {
    m_Started = true;
    m_Reporter.Info("READY");
    m_Reporter.Info("INTERPRETING");
  } else if (report.key == "NOCUT") {
    m_Reporter.Warning("A path of the cut colour can't be read and is not kept.");
  } else if (!m_Cuts.Add(report)) {
    Fail(ExitStatus::Failed,
         "The job's cut paths take more than " + std::to_string(CutPaths::Limit >> 20) + " MiB.");
  }
}

void RipRun::HandleSize(const std::string& value) {
  double width = 0;
  double height = 0;
  if (!ReadPair(value, width, height)) return;
  CheckPageSize(width, height);
  m_PageBytes = width * height * SeparationBytesPerPixel;
}

void RipRun::CheckPageSize(double width, double height) {
  const auto pixels = static_cast<double>(m_Parts.settings.pagePixels);
  const auto side = static_cast<double>(SidePixels);
  if (width * height <= pixels && width <= side && height <= side) return;
  const double shown = 1e15;
  Fail(ExitStatus::Failed,
       "Page " + std::to_string(std::max(m_Ended, m_Pages) + 1) + " would be " +
           Whole(std::min(width, shown)) + " x " + Whole(std::min(height, shown)) +
           " pixels; the limit is " + std::to_string(m_Parts.settings.pagePixels) +
           " pixels (RASTREL_RIP_PIXELS) and " + std::to_string(SidePixels) + " on a side.");
}

bool RipRun::CheckTotal(std::uint64_t bytes) {
  m_TotalBytes += bytes;
  if (m_TotalBytes <= m_Parts.settings.totalMebibytes << 20) return true;
  Fail(ExitStatus::Failed, "The job's pages take more than " +
                               std::to_string(m_Parts.settings.totalMebibytes) +
                               " MiB (RASTREL_RIP_SIZE).");
  return false;
}

// Looks now and then at what the interpreter has in its work directories. The job can write there.
bool RipRun::CheckWork() {
  const std::int64_t now = os::MonotonicNanoseconds();
  if (now < m_NextWatch) return true;
  m_NextWatch = now + WatchInterval;
  const DiskUse named = UseOf(m_Directory.Temporary());
  const DiskUse nameless = UseOfNameless(m_Interpreter->process.Number());
  const DiskUse planes = UseOf(m_Directory.Planes());
  const std::uint64_t limit = m_Parts.settings.workMebibytes;
  if (named.bytes + nameless.bytes > limit << 20 || named.files > WorkFiles) {
    Fail(ExitStatus::Failed, "The job's temporary files take more than " + std::to_string(limit) +
                                 " MiB (RASTREL_RIP_TEMP), or are more than " +
                                 std::to_string(WorkFiles) + ".");
  } else if (planes.bytes > m_Parts.settings.totalMebibytes << 20 || planes.files > WorkFiles) {
    Fail(ExitStatus::Failed,
         "The job's separations take more than " + std::to_string(m_Parts.settings.totalMebibytes) +
             " MiB (RASTREL_RIP_SIZE), or are more than " + std::to_string(WorkFiles) + " files.");
  }
  return !m_Failure;
}

bool RipRun::BeginPage(const PageSize& size) {
  if (HasEnough()) return false;
  ShowConverting();
  CheckPageSize(size.width, size.height);
  if (m_Failure || m_Parts.install) return !m_Failure;
  auto page = PageDirectory::Create(m_Directory.Path(), m_Pages + 1, size);
  if (!page) return FailOn(page.Error());
  m_Page = std::move(*page);
  return true;
}

bool RipRun::AddPixels(std::span<const std::byte> bytes) {
  if (!CheckTotal(bytes.size())) return false;
  if (!m_Page) return true;
  const auto added = m_Page->AddPixels(bytes);
  return added || FailOn(added.Error());
}

bool RipRun::EndPage() {
  if (m_Page) {
    const auto finished = m_Page->Finish(m_Parts.description);
    m_Page.reset();
    if (!finished) return FailOn(finished.Error());
  }
  CountPage();
  return true;
}

void RipRun::ShowConverting() {
  if (!m_Converting) m_Reporter.Info("CONVERTING");
  m_Converting = true;
}

void RipRun::CountPage() { m_Reporter.Page(++m_Pages); }

// Takes over the separations of every page but those that the interpreter may still be writing:
// `complete` pages are whole.
bool RipRun::MakeSeparations(unsigned complete) {
  while (!m_Failure && m_Separated < complete &&
         HasSeparations(m_Directory.Planes(), m_Separated + 1)) {
    ShowConverting();
    if (!CheckTotal(static_cast<std::uint64_t>(m_PageBytes))) return false;
    if (m_Pages != m_Separated) {
      Fail(ExitStatus::Failed, "The job changes between separations and other pages.");
      return false;
    }
    ++m_Separated;
    if (!m_Parts.install) {
      const auto made = MakeSeparationPage(m_Directory.Planes(), m_Directory.Path(), m_Separated,
                                           m_Parts.description, m_Parts.settings.pagePixels);
      if (!made) return FailOn(made.Error());
    }
    CountPage();
  }
  return !m_Failure;
}

void RipRun::ShowProgress() {
  const std::int64_t now = os::MonotonicNanoseconds();
  if (!m_Started || now < m_NextProgress) return;
  m_NextProgress = now + ProgressInterval;
  double share = 0;
  const JobLayout& job = m_Parts.job.layout;
  const bool telling = job.kind != JobKind::Pdf && job.length >= MeaningfulLength;
  if (m_Parts.measure) return;
  if (m_Parts.picture) {
    share = (telling ? m_Feed->SentShare() : 0) / 2 + m_Stream.PresentShare() / 2;
  } else if (job.pages > 0) {
    const double begun = m_Ended > 0 ? m_Ended - 1 : 0;
    share = std::max(begun, m_Pages + m_Stream.PresentShare()) / job.pages;
  } else if (telling) {
    share = m_Feed->SentShare();
  }
  // The rest is the closing of the last page, which only the end tells.
  m_Reporter.Progress(static_cast<unsigned>(std::clamp(share, 0.0, 0.99) * 100));
}

// What the interpreter's end means, if nothing went wrong before.
void RipRun::JudgeEnd() {
  const ProcessEnd end = m_Interpreter->process.Wait();
  if (m_Failure || HasEnough()) return;
  const ExitStatus programFailed =
      m_Parts.install ? ExitStatus::BadInput : ExitStatus::PostScriptError;
  if (!end.byItself) {
    const bool processor = end.status == SIGXCPU || end.status == SIGKILL;
    Fail(ExitStatus::Failed,
         processor ? "The job took more than " + std::to_string(m_Parts.settings.processorSeconds) +
                         " seconds of processor time and was ended (RASTREL_RIP_CPU)."
                   : "Ghostscript was ended by signal " + std::to_string(end.status) + ".");
  } else if (m_LastError.find("/VMerror") != std::string::npos && end.status != 0) {
    Fail(ExitStatus::Failed, "The job needs more than " +
                                 std::to_string(m_Parts.settings.memoryMebibytes) +
                                 " MiB of memory (RASTREL_RIP_MEMORY).");
  } else if (end.status != 0) {
    Fail(programFailed, m_LastError.empty() ? "Ghostscript could not interpret the job."
                                            : "PostScript error: " + m_LastError + ".");
  } else if (!m_Stream.Problem().empty()) {
    Fail(ExitStatus::Failed, "The interpreter's pixels can't be read: " + m_Stream.Problem() + ".");
  }
  if (m_Failure) return;
  m_Reporter.Info("SPOOLING");
  if (!MakeSeparations(std::numeric_limits<unsigned>::max())) return;
  if (m_Pages == 0 && !m_Parts.install) Fail(programFailed, "The job makes no page.");
}

}  // namespace rastrel::interpreter
