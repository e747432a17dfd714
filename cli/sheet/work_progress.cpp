#include "cli/sheet/work_progress.h"

#include <algorithm>

#include "cli/console/json_line.h"
#include "cli/job/redraw_intervals.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"

namespace rastrel::cli::sheet {

WorkProgress::WorkProgress(bool json) : m_Json(json) {
  const bool isLive = os::IsTerminal(os::StandardHandle(os::StandardStream::Error));
  if (json || isLive) m_Thread = std::thread([this] { Run(); });
}

WorkProgress::~WorkProgress() {
  if (!m_Thread.joinable()) return;
  {
    const std::lock_guard<std::mutex> guard(m_Mutex);
    m_Ended = true;
  }
  m_Changed.notify_one();
  m_Thread.join();
  if (m_Shown) m_Line.Finish();
}

void WorkProgress::Enter(const std::string& stage) {
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Stage = stage;
  m_Percent.reset();
}

void WorkProgress::Reach(std::uint64_t done, std::uint64_t whole) {
  if (whole == 0) return;
  const std::lock_guard<std::mutex> guard(m_Mutex);
  m_Percent = static_cast<int>(std::min<std::uint64_t>(done / (whole / 100 + 1), 100));
}

void WorkProgress::Run() {
  std::unique_lock<std::mutex> lock(m_Mutex);
  auto wait = redraw::BeforeSpreadsheet;
  while (!m_Changed.wait_for(lock, wait, [this] { return m_Ended; })) {
    wait = m_Json ? redraw::OfSpreadsheetAsJson : redraw::OfSpreadsheet;
    if (m_Json) {
      WriteJson();
      continue;
    }
    m_Shown = true;
    m_Line.Show(m_Stage, m_Percent);
    m_Line.Tick();
  }
}

void WorkProgress::WriteJson() {
  JsonLine line("progress");
  line.Add("originator", "system").Add("text", std::string_view(m_Stage));
  if (m_Percent) line.Add("percent", *m_Percent);
  line.Write();
}

}  // namespace rastrel::cli::sheet
