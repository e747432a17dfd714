#pragma once

#include <mutex>

#include "cli/job/terminal_views.h"
#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// How `rastrel queue` shows its dialog, on the terminal or in a window, and how it is cancelled.
class QueueView {
 public:
  /// With `json` the terminal gets JSON lines.
  explicit QueueView(bool json) : m_Terminal(json) {}
  QueueView(const QueueView&) = delete;
  QueueView& operator=(const QueueView&) = delete;

  /// Shows a window from now on. Fails with a message for the user if there can be none. The
  /// window's toolkit starts threads: REQUIRES that signals are taken already.
  [[nodiscard]] Expected<void> UseWindow();

  /// Shows the dialog until it has ended; returns its result.
  [[nodiscard]] int Show(CQProgressDlg& dialog);

  /// Cancels the dialog on show, and one that comes later. Any thread.
  void RequestStop();
  /// Whether a person cancelled, or a stop was requested.
  [[nodiscard]] bool IsCancelled() const { return m_Cancelled || m_Terminal.IsCancelled(); }

 private:
  void SetDialog(CQProgressDlg* dialog);

  TerminalViews m_Terminal;
  host::DialogViews* m_Views = &m_Terminal;
  bool m_Cancelled = false;
  std::mutex m_Mutex;
  CQProgressDlg* m_Dialog = nullptr;  // on show; guarded
  bool m_Stopped = false;             // guarded
};

}  // namespace rastrel::cli
