#include "interpreter/rip_run.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include "interpreter/later_pages.h"
#include "interpreter/password.h"
#include "interpreter/warm_start.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/random_digits.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t PixelBufferSize = 262144;
constexpr std::size_t ReportPipeSize = 65536;  // of a pipe that is not set otherwise
constexpr std::size_t WordBytes = 16;
constexpr const char* UnreadReports = "Nobody reads the reports any more";
constexpr std::int64_t NanosecondsPerMillisecond = 1000000;
constexpr std::int64_t ProgressInterval = 50 * NanosecondsPerMillisecond;

RunPart WithUse(RunPart part, const Settings& settings) {
  if (!part.use) part.use = std::make_shared<JobUse>(settings.memoryMebibytes << 20);
  return part;
}

}  // namespace

RipRun::RipRun(RunRequest request, const RunMode& mode, const RunDirectory& directory,
               RunListener& listener, Guardian& guardian, RunPart part)
    : m_Request(std::move(request)),
      m_Mode(mode),
      m_Directory(directory),
      m_Listener(listener),
      m_Guardian(guardian),
      m_Part(WithUse(std::move(part), m_Request.settings)),
      m_Number(m_Part.use->Join()),
      m_Pages(mode.Pages(), directory, m_Request.settings, *m_Part.use, m_Number, listener,
              m_Result),
      m_Stream(m_Pages),
      m_Pixels(PixelBufferSize) {
  m_Pages.Description().job = m_Request.title;
  m_Pages.Description().access = m_Request.access;
  m_Pages.Description().keepsTiff = m_Request.keepsTiff;
  m_Pages.Description().takesTiff = m_Request.takesTiff;
  if (m_Part.pages.first > 0) m_Pages.Description().pagesBefore = m_Part.pages.first - 1;
}

Expected<void> RipRun::Run() {
  if (Start()) {
    while (Step()) {
    }
    const bool relieved = m_Result && IsRelieved();
    if (!relieved) DropLater();
    if (!m_Result || HasEnough() || relieved) m_Interpreter->process.Kill();
    if (relieved) {
      TakeLater();
    } else {
      JudgeEnd();
    }
    if (m_Result) WarnOfDamage();
    WarnOfUnmetColors();
  }
  return m_Result;
}

bool RipRun::Start() {
  const std::string program = FindGhostscript();
  if (program.empty()) {
    return Fail(
        FailureOf("Ghostscript is not installed: there is no program gs on the search path"));
  }
  const auto word = os::RandomDigits(WordBytes);
  if (!word) return Fail(word.Error());
  RunStart start{program, m_Request.ripDirectory, *word, m_Mode.Script()};
  start.kind = m_Request.job.layout.kind;
  start.setsCutColor = m_Request.setsCutColor || m_Request.wantsCut;
  // Paths come by the megabyte, and hardly anything else does.
  if (start.setsCutColor) start.reportLink = m_ReportLink.emplace(m_Directory.Planes()).Name();
  start.asks = static_cast<bool>(m_Request.wantsCut);
  start.asksWidth = m_Request.asksLineWidth;
  // A warm interpreter has no way for answers.
  start.isSmall = !start.asks && m_Request.job.layout.length <= WarmJobBytes;
  start.prefix = m_Request.prefix.Get();
  start.area = m_Request.area;
  start.threads = m_Request.settings.threads;
  start.page = m_Request.settings.page;
  if (auto opened = OpenPdf(start); !opened) return Fail(opened.Error());
  auto started = StartRun(start, m_Directory, m_Request.settings, m_Guardian);
  if (!started) return Fail(started.Error());
  m_Interpreter.emplace(std::move(*started));
  m_Watch.emplace(m_Directory, m_Request.settings, m_Interpreter->process.Number(), *m_Part.use,
                  m_Number, m_Part.pages.first == 0);
  // Where systemdict stays open for the prolog, the interpreter begins with a warning of it.
  m_Reports.emplace(*word, start.setsCutColor, m_Pages, m_Listener, m_Result);
  if (start.asks) m_Reports->AnswerBy({m_Request.wantsCut, std::move(m_Interpreter->answers)});
  const JobLayout& layout = m_Request.job.layout;
  auto parts = m_Part.parts;
  if (parts.empty()) parts = {{layout.offset, layout.length}};
  m_Feed.emplace(m_Request.job.file.Get(), std::move(parts), std::move(m_Interpreter->job));
  return true;
}

Expected<void> RipRun::OpenPdf(RunStart& start) const {
  if (!IsPdf()) return {};
  start.pdf = m_Request.job.file.Get();
  start.pdfBox = m_Request.settings.pdfBox;
  start.pdfPages = m_Part.pages;
  if (m_Request.settings.passwordFile.empty()) return {};
  auto password = ReadPassword(m_Request.settings.passwordFile);
  if (!password) return password.Error();
  start.pdfPassword = std::move(*password);
  return {};
}

// One round of waiting and working. False when there is nothing more to wait for.
bool RipRun::Step() {
  if (m_Result && IsRelieved()) return Await();
  const bool streaming = m_Interpreter->pixels.IsOpen() || m_Interpreter->reports.IsOpen();
  if (!m_Result || HasEnough() || !streaming) return false;
  if (!Poll()) return false;
  if (const auto checked = m_Watch->CheckUse(); !checked) return Fail(checked.Error());
  // A report that was written before a pixel is in its pipe when the pixel has been read,
  // and one reading of ReadReports takes a pipe's whole content. So a page's reports are known
  // before its pixels count.
  if (!ReadPixels() || !ReadReports() || !TakePixels()) return false;
  if (!m_ReportLink && m_Feed->Descriptor() >= 0) {
    if (const auto sent = m_Feed->Send(); !sent) return Fail(sent.Error());
  }
  StartLater();
  ShowProgress();
  return true;
}

// Whether others make all pages that are left.
bool RipRun::IsRelieved() const {
  return m_Part.later != nullptr && m_Part.later->Covers(m_Pages.Pages());
}

// Has others make later pages as soon as their number and size are known, and makes them itself
// again when that does not go well.
void RipRun::StartLater() {
  if (m_Part.later == nullptr) return;
  if (m_Pages.Counted() > 0) {
    m_Request.job.layout.pages = m_Pages.Counted();
    m_Part.later->Start(m_Request, m_Part.use, m_Pages.Counted(), m_Pages.AnnouncedPixels());
  }
  if (m_Part.later->IsAmiss()) DropLater();
}

void RipRun::DropLater() {
  if (m_Part.later != nullptr) m_Part.later->GiveUp();
  if (std::exchange(m_Resting, false)) m_Interpreter->process.Resume();
}

// One round of waiting for the later pages. The interpreter would go on to make them too.
bool RipRun::Await() {
  const bool fits = m_Part.use->PagesOfAll() <= m_Request.settings.totalMebibytes << 20;
  if (m_Part.later->IsAmiss() || !fits) {
    DropLater();
    return true;
  }
  if (m_Part.later->AreMade()) return false;
  if (!std::exchange(m_Resting, true)) m_Interpreter->process.Pause();
  const std::int64_t left = m_Watch->Left();
  if (left <= 0) return Fail(m_Watch->TimeOver());
  std::array<pollfd, 2> entries{
      {{m_Part.later->Descriptor(), POLLIN, 0}, {m_Listener.Pipe(), 0, 0}}};
  const auto timeout = static_cast<int>(
      std::min(left, std::int64_t{ProgressInterval}) / NanosecondsPerMillisecond + 1);
  if (poll(entries.data(), entries.size(), timeout) < 0 && errno != EINTR)
    return Fail({"poll", {}, errno});
  if ((entries[1].revents & POLLERR) != 0) return Fail(FailureOf(UnreadReports));
  m_Part.later->Acknowledge();
  if (const auto checked = m_Watch->CheckUse(); !checked) return Fail(checked.Error());
  ShowProgress();
  return true;
}

// The interpreter has been killed, perhaps within the first page that is not its own.
void RipRun::TakeLater() {
  static_cast<void>(m_Interpreter->process.Wait());
  if (const auto dropped = m_Pages.DropPresent(); !dropped) {
    Fail(dropped.Error());
    return;
  }
  const auto last = m_Part.later->TakeOver(m_Pages.Pages());
  if (!last) {
    Fail(last.Error());
    return;
  }
  m_Taken = *last;
  for (unsigned page = m_Pages.Pages() + 1; page <= m_Taken; ++page) m_Listener.PageMade(page);
  m_Listener.StateReached(RunState::Spooling);
}

bool RipRun::Poll() {
  const std::int64_t left = m_Watch->Left();
  if (left <= 0) return Fail(m_Watch->TimeOver());
  // The interpreter writes pixels row by row. While they flow, a moment's rest lets the pipe gather
  // some, which costs either side far less than to be woken for each. So it is with cut paths.
  const int pixels = m_Flowing ? -1 : m_Interpreter->pixels.Get();
  const int job = m_ReportLink ? -1 : m_Feed->Descriptor();
  const int reports = m_ReportsFlow ? -1 : m_Interpreter->reports.Get();
  std::array<pollfd, 4> entries{
      {{reports, POLLIN, 0}, {pixels, POLLIN, 0}, {job, POLLOUT, 0}, {m_Listener.Pipe(), 0, 0}}};
  const auto timeout = static_cast<int>(std::min<std::int64_t>(
      left / NanosecondsPerMillisecond + 1,
      m_Flowing || m_ReportsFlow ? 1 : WorkWatch::Interval / NanosecondsPerMillisecond));
  if (poll(entries.data(), entries.size(), timeout) < 0 && errno != EINTR) {
    return Fail({"poll", {}, errno});
  }
  // A host that was killed can end nothing any more, but nobody reads its pipe either.
  if ((entries[3].revents & POLLERR) != 0) {
    return Fail(FailureOf(UnreadReports));
  }
  return true;
}

bool RipRun::ReadReports() {
  std::array<char, ReportPipeSize> buffer;
  std::size_t total = 0;
  while (m_Interpreter->reports.IsOpen()) {
    const ssize_t count = read(m_Interpreter->reports.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) break;
    if (count < 0) return Fail({"read", "the interpreter's messages", errno});
    if (count == 0) {
      m_Interpreter->reports.Reset();
      m_Reports->Finish();
      break;
    }
    total += static_cast<std::size_t>(count);
    m_Reports->Add({buffer.data(), static_cast<std::size_t>(count)});
    // A flood of messages must not keep the pixels and the clock waiting.
    if (static_cast<std::size_t>(count) == buffer.size()) break;
  }
  FindReportsFlow(total);
  // The prolog has opened it. No job has begun, since none is sent as long as there is the link.
  if (m_ReportLink && m_Reports->HasProlog()) {
    if (const auto removed = m_ReportLink->Remove(); !removed) return Fail(removed.Error());
    m_ReportLink.reset();
  }
  return static_cast<bool>(m_Result);
}

// An interpreter that asks often is not kept waiting for its answers, nor one whose pipe would fill
// in that moment.
void RipRun::FindReportsFlow(std::size_t taken) {
  const std::uint64_t questions = m_Reports->Questions();
  m_SinceQuestion = questions == m_Questions ? m_SinceQuestion + taken : 0;
  m_Questions = questions;
  const bool asksSeldom = questions == 0 || m_SinceQuestion > ReportPipeSize;
  m_ReportsFlow = asksSeldom && taken > ReportPipeSize / 64 && taken < ReportPipeSize / 2;
}

bool RipRun::ReadPixels() {
  if (!m_Interpreter->pixels.IsOpen()) return true;
  const ssize_t count = read(m_Interpreter->pixels.Get(), m_Pixels.data(), m_Pixels.size());
  m_Flowing = count > 0 && static_cast<std::size_t>(count) < m_Pixels.size();
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  if (count < 0) return Fail({"read", "the interpreter's pixels", errno});
  m_PixelCount = static_cast<std::size_t>(count);
  return true;
}

bool RipRun::TakePixels() {
  if (!m_PixelCount) return true;
  const std::size_t count = *std::exchange(m_PixelCount, {});
  if (count == 0) {
    // A stream that ends within a page is judged with the interpreter's end, which has the reason.
    static_cast<void>(m_Stream.Finish());
    m_Interpreter->pixels.Reset();
  } else if (!m_Stream.Add(std::span(m_Pixels).first(count)) && !m_Stream.Reason().empty()) {
    FailOnPixels();
  }
  return static_cast<bool>(m_Result);
}

RunProgress RipRun::Progress() const {
  return {.job = m_Request.job.layout,
          .pages = m_Pages.Pages() + (m_Part.later != nullptr ? m_Part.later->Made() : 0),
          .begun = m_Pages.Ended(),
          .measured = !m_Reports->Measure().empty(),
          .sentShare = m_Feed->SentShare(),
          .pageShare = m_Stream.PresentShare()};
}

void RipRun::ShowProgress() {
  const std::int64_t now = os::MonotonicNanoseconds();
  if (!m_Reports->HasStarted() || now < m_NextProgress) return;
  m_NextProgress = now + ProgressInterval;
  // The rest is the closing of the last page, whose end comes with the run's.
  const double share = std::clamp(m_Mode.Share(Progress()), 0.0, 0.99);
  m_Listener.Progressed(static_cast<unsigned>(share * 100));
}

// Keeps the first failure of the run, which is the one that is reported: those after it follow from
// it. False, for the callers to return.
bool RipRun::Fail(Failure failure) {
  KeepFirst(m_Result, std::move(failure));
  return false;
}

void RipRun::FailOnPixels() {
  Fail(FailureOf("The interpreter's pixels can't be read: " + m_Stream.Reason()));
}

// Finds the result in the way that the interpreter ended, unless the run has failed before.
void RipRun::JudgeEnd() {
  const auto end = m_Interpreter->process.Wait();
  if (!m_Result || HasEnough()) return;
  if (end) {
    JudgeStatus(*end);
  } else {
    Fail(end.Error());
  }
  if (!m_Result) return;
  // A report of each page's end comes before its pixels.
  if (m_Pages.Pages() == 0 && m_Pages.Ended() == 0 && m_Mode.NeedsPage()) {
    m_HasEndedNoPage = !IsPdf();
    Fail(WhyNoPage());
    return;
  }
  m_Listener.StateReached(RunState::Spooling);
  m_Pages.TakeLastSeparations();
  if (m_Pages.Pages() == 0 && m_Mode.NeedsPage()) Fail(WhyNoPage());
}

Failure RipRun::WhyNoPage() const {
  if (IsPdf()) return m_Reports->Pdf().WhyNoPage();
  if (const unsigned skipped = m_Reports->SkippedPages(); skipped > 0)
    return FailureOf("The job has no page " + std::to_string(m_Request.settings.page) +
                         "; it has " + std::to_string(skipped),
                     FailureCode::BadProgram);
  return FailureOf("The job makes no page", FailureCode::BadProgram);
}

// The interpreter goes on after an error in a PDF, and leaves the rest of that page out.
void RipRun::WarnOfDamage() {
  const std::string& error = m_Reports->Pdf().FirstError();
  if (!IsPdf() || error.empty()) return;
  m_Listener.Warned("The PDF is damaged, and its pages may be incomplete (Ghostscript: " + error +
                    ").");
}

// A cut color that is spelled otherwise than in the job would be lost without a word.
void RipRun::WarnOfUnmetColors() {
  if (!m_Result || !m_Mode.Pages().keeps) return;
  for (const std::string& color : m_Pages.Cuts().UnmetColors()) {
    m_Listener.Warned("No path and no text is painted in the cut colour " + color +
                      "; nothing is cut in it.");
  }
}

void RipRun::JudgeStatus(const ProcessEnd& end) {
  const Settings& settings = m_Request.settings;
  const std::string& error = m_Reports->LastError();
  if (!end.byItself) {
    const bool isProcessorTime = end.status == SIGXCPU || end.status == SIGKILL;
    Fail(isProcessorTime
             ? m_Watch->ProcessorTimeOver()
             : FailureOf("Ghostscript was ended by signal " + std::to_string(end.status)));
  } else if (error.find("/VMerror") != std::string::npos && end.status != 0) {
    Fail(FailureOf("The job needs more than " + std::to_string(settings.memoryMebibytes) +
                   " MiB of memory (RASTREL_RIP_MEMORY)"));
  } else if (end.status != 0 && IsPdf() && m_Reports->Pdf().IsLocked()) {
    Fail(WhyNoPage());
  } else if (end.status != 0) {
    Fail(FailureOf(
        error.empty() ? "Ghostscript could not interpret the job" : "PostScript error: " + error,
        FailureCode::BadProgram));
  } else if (!m_Stream.Reason().empty()) {
    FailOnPixels();
  }
}

}  // namespace rastrel::interpreter
