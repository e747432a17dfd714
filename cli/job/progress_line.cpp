#include "cli/job/progress_line.h"

#include <algorithm>
#include <array>
#include <utility>

#include "cli/console/standard_streams.h"
#include "cli/job/redraw_intervals.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

constexpr std::int64_t Second = 1'000'000'000;  // nanoseconds
constexpr int BarLength = 20;
constexpr std::size_t StageWidth = 20;
constexpr unsigned UsualColumns = 80;

std::string StageOf(const JobEvent& event) {
  switch (event.code.value_or(JTI_BAD)) {
    case JTI_START_RIPPING: return "RIP";
    case JTI_START_PRINTING: return "output engine";
    case JTI_START_SPOOLING: return "keeping pages";
    case JTI_PROCESSING_COMPLETED:
    case JTI_PRINTING_ABORTED: return "finishing";
    case JTI_INITIALISING:
    case JTI_READY: return event.originator == JTO_RIP ? "RIP starting" : "output engine";
    case JTI_INTERPRETING: return "RIP interpreting";
    case JTI_CONVERTING: return "RIP converting";
    case JTI_SPOOLING: return "RIP writing pages";
    case JTI_PRINTING: return "delivering";
    case JTI_FLUSHING: return "writing files";
    default: return {};
  }
}

std::string Padded(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string PercentText(int percent) {
  const std::string digits = std::to_string(percent);
  return std::string(digits.size() < 3 ? 3 - digits.size() : 0, ' ') + digits + " %";
}

std::string BarOf(int percent) {
  const int filled = std::clamp(percent * BarLength / 100, 0, BarLength);
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(BarLength - filled), '-') + "]";
}

std::string TimeText(std::int64_t seconds) {
  const auto twoDigits = [](std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  const std::int64_t minutes = seconds / 60;
  if (minutes < 60) return std::to_string(minutes) + ":" + twoDigits(seconds % 60);
  return std::to_string(minutes / 60) + ":" + twoDigits(minutes % 60) + ":" +
         twoDigits(seconds % 60);
}

}  // namespace

void JobProgress::Enter(std::string stage) { m_Stage = std::move(stage); }

void JobProgress::Set(std::string stage, std::optional<int> percent) {
  Enter(std::move(stage));
  m_Percent = percent;
}

void JobProgress::Take(const JobEvent& event) {
  if (event.kind == JobEventKind::Progress) m_Percent = event.percent;
  if (event.kind == JobEventKind::Page) m_Page = event.page;
  if (event.kind != JobEventKind::State) return;
  // A child begins at its own zero, with its own first page.
  const int code = event.code.value_or(JTI_BAD);
  if (code <= JTI_PRINTING_ABORTED || code == JTI_READY) m_Percent.reset();
  if (code == JTI_START_RIPPING || code == JTI_START_PRINTING) m_Page.reset();
  if (std::string stage = StageOf(event); !stage.empty()) Enter(std::move(stage));
}

std::string RenderProgress(const ProgressView& progress, std::int64_t elapsedSeconds,
                           unsigned columns) {
  const std::string between = "  ";
  const std::string time = TimeText(std::max<std::int64_t>(elapsedSeconds, 0));
  // A job of an unknown number of pages has no percentage, and an empty bar says nothing.
  const std::string percent = progress.percent ? PercentText(*progress.percent) : "";
  const std::string bar = progress.percent ? between + BarOf(*progress.percent) : "";
  const std::string page = progress.page ? "page " + std::to_string(*progress.page) : "";
  const std::string pageAndTime = page.empty() ? time : page + between + time;
  const std::array<std::string, 4> forms{
      Padded(progress.stage, StageWidth) + percent + bar + between + pageAndTime,
      Padded(progress.stage, StageWidth) + percent + between + pageAndTime,
      percent.empty() ? progress.stage : progress.stage + between + percent,
      progress.stage,
  };
  for (const std::string& form : forms)
    if (form.size() < columns) return form;
  return forms.back().substr(0, columns == 0 ? 0 : columns - 1);
}

std::string RenderProgress(const JobProgress& progress, std::int64_t elapsedSeconds,
                           unsigned columns) {
  return RenderProgress(ProgressView{progress.Stage(), progress.Percent(), progress.Page()},
                        elapsedSeconds, columns);
}

ProgressLine::ProgressLine() : m_Begin(os::MonotonicNanoseconds()) {}

void ProgressLine::OnEvent(const JobEvent& event) {
  m_Progress.Take(event);
  if (event.kind == JobEventKind::Warning) Say("warning: " + event.text);
  if (event.kind == JobEventKind::State ||
      os::MonotonicNanoseconds() - m_Drawn > redraw::OnJobEvents.count())
    Draw();
}

void ProgressLine::Show(std::string stage, std::optional<int> percent) {
  m_Progress.Set(std::move(stage), percent);
}

void ProgressLine::Tick() { Draw(); }

void ProgressLine::Say(const std::string& text) {
  ClearProgress();
  WriteErrorLine(text);
}

void ProgressLine::Finish() {
  m_Finished = true;
  ClearProgress();
}

void ProgressLine::Draw() {
  if (m_Finished) return;
  m_Drawn = os::MonotonicNanoseconds();
  const unsigned columns = os::TerminalColumns(os::StandardHandle(os::StandardStream::Error));
  const std::string line = RenderProgress(m_Progress, (m_Drawn - m_Begin) / Second,
                                          columns == 0 ? UsualColumns : columns);
  ShowProgress(line);
}

}  // namespace rastrel::cli
