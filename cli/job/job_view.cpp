#include "cli/job/job_view.h"

#include "cli/console/command_runs.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/job/event_writer.h"
#include "cli/job/progress_line.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli {
namespace {

constexpr int PercentStep = 10;

std::unique_ptr<ProgressLine> NewLine(bool json) {
  if (json || !os::IsTerminal(os::StandardHandle(os::StandardStream::Error))) return nullptr;
  return std::make_unique<ProgressLine>();
}

}  // namespace

JobView::JobView(bool json) : m_Json(json), m_Line(NewLine(json)) {}

JobView::~JobView() = default;

void JobView::Begin(const std::string& file) {
  {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    m_Line = NewLine(m_Json);
    m_ShownPercent = 0;
  }
  Say("job", "printing", file);
}

void JobView::OnEvent(const JobEvent& event) {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  if (m_Json) {
    WriteOutLines(EventLine(event));
  } else if (m_Line) {
    m_Line->OnEvent(event);
  } else {
    ShowPlain(event);
  }
}

void JobView::ShowPlain(const JobEvent& event) {
  if (IsOneOfSeveral() && event.kind != JobEventKind::Warning) return;
  const std::string who = OriginatorName(event.originator);
  switch (event.kind) {
    case JobEventKind::State:
      m_ShownPercent = 0;
      if (!event.text.empty()) WriteErrorLine(event.text);
      break;
    case JobEventKind::Progress:
      if (*event.percent < m_ShownPercent + PercentStep) break;
      m_ShownPercent = *event.percent;
      WriteErrorLine(who + ": " + std::to_string(*event.percent) + " %");
      break;
    case JobEventKind::Page: WriteErrorLine(who + ": page " + std::to_string(*event.page)); break;
    case JobEventKind::Warning: WriteErrorLine(who + ": warning: " + event.text); break;
    // Errors come with the report at the end, and files with the result.
    case JobEventKind::Error:
    case JobEventKind::Output:
    case JobEventKind::Log: break;
  }
}

void JobView::Say(const char* event, const std::string& text, const std::string& path) {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  if (m_Json) {
    JsonLine line(event);
    line.Add("originator", OriginatorWord(JTO_SYSTEM)).AddIfAny("text", text);
    line.AddIfAny("path", path).Write();
    return;
  }
  const std::string message = path.empty() ? text : text + ": " + path;
  if (m_Line) {
    m_Line->Say(message);
  } else {
    WriteErrorLine(message);
  }
}

void JobView::Tick() {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  if (m_Line) m_Line->Tick();
}

void JobView::Finish() {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  if (m_Line) m_Line->Finish();
}

}  // namespace rastrel::cli
