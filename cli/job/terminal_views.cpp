#include "cli/job/terminal_views.h"

#include <algorithm>
#include <array>

#include "cli/console/command_runs.h"
#include "cli/console/json_line.h"
#include "cli/console/standard_streams.h"
#include "cli/job/control_prompt.h"
#include "cli/job/progress_line.h"
#include "cli/job/redraw_intervals.h"
#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/terminal.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::cli {
namespace {

constexpr std::int64_t Second = 1'000'000'000;  // nanoseconds
// Until an escape is a key by itself.
constexpr std::chrono::milliseconds AfterEscape{50};
constexpr unsigned UsualColumns = 80;
constexpr int PercentStep = 10;
constexpr char CtrlC = '\x03';
constexpr char Escape = '\x1b';

os::StandardStream constexpr ShownOn = os::StandardStream::Error;

bool IsLive(bool json) { return !json && os::IsTerminal(os::StandardHandle(ShownOn)); }

}  // namespace

bool HoldsCancelKey(const std::string& bytes, bool& more) {
  more = false;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    const char key = bytes[at];
    if (key == 'q' || key == 'Q' || key == CtrlC) return true;
    if (key != Escape) continue;
    if (at + 1 == bytes.size()) {
      more = true;
      return false;
    }
    // Another key's sequence: "[", parameters and a letter, or "O" and a letter. An escape in
    // front of anything else is a key by itself.
    if (bytes[at + 1] != '[' && bytes[at + 1] != 'O') return true;
    at += 2;
    while (at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '?') ++at;
  }
  return false;
}

class TerminalViews::View : public host::DialogView {
 public:
  View(TerminalViews& views, host::DialogLogic& dialog)
      : m_Views(views), m_Dialog(dialog), m_Live(IsLive(views.m_Json)) {}

  void SetText(int control, const std::wstring& text) override;
  void SetRange(int control, int lowest, int highest) override;
  void SetPosition(int control, int position) override;
  void RunModal() override;

 private:
  [[nodiscard]] bool Is(int control, host::ControlKind kind) const;
  void Turn();
  void Wait();
  void TakeKeys();
  void Cancel();
  void Draw();
  void ShowStage(const std::string& stage);
  void ShowPercent(int percent);

  TerminalViews& m_Views;
  host::DialogLogic& m_Dialog;
  const bool m_Live;
  std::unique_ptr<os::TerminalKeys> m_Keys;
  ProgressView m_View;
  int m_Lowest = 0;
  int m_Highest = 100;
  std::int64_t m_Begin = 0;
  std::int64_t m_Drawn = 0;
  bool m_Changed = true;
};

// The questions of a dialog; a stop cancels it like every other.
class TerminalViews::Asked : public ControlPrompt {
 public:
  Asked(TerminalViews& views, host::DialogLogic& dialog, HANDLE input)
      : ControlPrompt(dialog, input, views.m_Stop.m_hObject), m_Views(views), m_Dialog(dialog) {}
  void RunModal() override {
    if (m_Views.m_Stopped) return m_Dialog.Command(host::CancelCommand);
    ControlPrompt::RunModal();
    if (IsCancelled()) m_Views.m_Stopped = true;
  }

 private:
  TerminalViews& m_Views;
  host::DialogLogic& m_Dialog;
};

std::unique_ptr<host::DialogView> TerminalViews::MakeView(host::DialogLogic& dialog) {
  const HANDLE input = os::StandardHandle(os::StandardStream::Input);
  if (!m_Json && HasInputControls(dialog) && os::IsTerminalDevice(input) &&
      os::IsTerminalDevice(os::StandardHandle(ShownOn)))
    return std::make_unique<Asked>(*this, dialog, input);
  return std::make_unique<View>(*this, dialog);
}

void TerminalViews::ShowMessage(CWnd*, const std::wstring& text, const std::wstring& title) {
  if (m_Json) {
    JsonLine("message").Add("text", os::Utf8FromWide(text)).Write();
  } else {
    WriteErrorLine(os::Utf8FromWide(title + L": " + text));
  }
}

bool TerminalViews::View::Is(int control, host::ControlKind kind) const {
  const auto& controls = m_Dialog.GetResource().controls;
  return std::ranges::any_of(controls, [&](const host::DialogControl& one) {
    return one.id == control && one.kind == kind;
  });
}

void TerminalViews::View::SetText(int control, const std::wstring& text) {
  const std::string message = os::Utf8FromWide(text);
  // Before the first stage the title is shown.
  if (control == host::TitleControl && m_View.stage.empty()) {
    m_View.stage = message;
  } else if (Is(control, host::ControlKind::Text)) {
    m_View.stage = message;
    ShowStage(message);
  }
  m_Changed = true;
}

void TerminalViews::View::SetRange(int, int lowest, int highest) {
  m_Lowest = lowest;
  m_Highest = highest;
}

void TerminalViews::View::SetPosition(int, int position) {
  const int inside = std::clamp(position, m_Lowest, m_Highest);
  const int percent = m_Highest > m_Lowest ? (inside - m_Lowest) * 100 / (m_Highest - m_Lowest) : 0;
  if (m_View.percent != percent) ShowPercent(percent);
  m_Changed = true;
}

void TerminalViews::View::ShowStage(const std::string& stage) {
  if (IsOneOfSeveral()) return;
  if (m_Views.m_Json) {
    JsonLine("state").Add("text", stage).Write();
  } else if (!m_Live) {
    WriteErrorLine(stage);
  }
}

void TerminalViews::View::ShowPercent(int percent) {
  const int before = m_View.percent.value_or(0);
  m_View.percent = percent;
  if (IsOneOfSeveral()) return;
  if (m_Views.m_Json) {
    JsonLine("progress").Add("percent", static_cast<std::int64_t>(percent)).Write();
  } else if (!m_Live && percent / PercentStep != before / PercentStep) {
    WriteErrorLine(std::to_string(percent) + " %");
  }
}

void TerminalViews::View::RunModal() {
  m_Begin = os::MonotonicNanoseconds();
  if (m_Live) m_Keys = os::TerminalKeys::Take(os::StandardHandle(os::StandardStream::Input));
  while (!m_Dialog.HasEnded()) Turn();
  m_Keys.reset();
  if (m_Live) ClearProgress();
}

void TerminalViews::View::Turn() {
  if (m_Views.m_Stopped) return Cancel();
  TakeKeys();
  // In this order: the worker of the dialog posts its last message before it ends.
  const bool mayEnd = m_Dialog.MayEndByItself();
  if (m_Dialog.HasEnded() || m_Dialog.HandleMessages() > 0) return Draw();
  if (!mayEnd) return m_Dialog.Command(host::CancelCommand);
  Draw();
  Wait();
}

void TerminalViews::View::Wait() {
  const HANDLE keys = m_Keys && !m_Keys->IsGone() ? m_Keys->GetHandle() : INVALID_HANDLE_VALUE;
  const std::array<HANDLE, 3> handles{m_Dialog.GetPostedHandle(), m_Views.m_Stop.m_hObject, keys};
  static_cast<void>(os::WaitReadable(handles, os::Deadline::After(redraw::ForElapsedTime)));
}

void TerminalViews::View::TakeKeys() {
  if (!m_Keys) return;
  std::string bytes = m_Keys->Read();
  bool more = false;
  bool cancels = HoldsCancelKey(bytes, more);
  if (more) {
    const std::array<HANDLE, 1> handles{m_Keys->GetHandle()};
    static_cast<void>(os::WaitReadable(handles, os::Deadline::After(AfterEscape)));
    const std::string rest = m_Keys->Read();
    cancels = rest.empty() || HoldsCancelKey(Escape + rest, more);
  }
  if (!cancels && !m_Keys->IsGone()) return;
  m_Views.m_Stopped = true;
  Cancel();
}

void TerminalViews::View::Cancel() {
  if (m_Dialog.HasEnded()) return;
  if (m_Live) ShowProgress("stopping");
  m_Dialog.Command(host::CancelCommand);
}

void TerminalViews::View::Draw() {
  if (!m_Live || m_Dialog.HasEnded()) return;
  const std::int64_t now = os::MonotonicNanoseconds();
  const std::chrono::nanoseconds pause =
      m_Changed ? redraw::OnDialogChanges : redraw::ForElapsedTime;
  if (now - m_Drawn < pause.count()) return;
  m_Drawn = now;
  m_Changed = false;
  const unsigned columns = os::TerminalColumns(os::StandardHandle(ShownOn));
  const unsigned room = columns == 0 ? UsualColumns : columns;
  std::string line = RenderProgress(m_View, (now - m_Begin) / Second, room);
  const std::string hint = m_Keys ? "  q: cancel" : "";
  if (line.size() + hint.size() < room) line += hint;
  ShowProgress(line);
}

ViewsHost::ViewsHost(host::DialogViews& views) : m_Inner(host::GetHost()), m_Views(views) {
  host::SetHost(this);
}

ViewsHost::~ViewsHost() { host::SetHost(&m_Inner); }

}  // namespace rastrel::cli
