#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "cli/job/terminal_views.h"
#include "rastrel/conversion/dialogs/dialog.h"
#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cli {

/// The views of a conversion that the library runs, dialogs included: on the terminal, or in
/// windows. They remember, since the library returns none of it, whether the queue
/// program was started, who cancelled, and the messages that were shown.
class ConversionViews : public host::DialogViews {
 public:
  /// With `json` the terminal gets JSON lines.
  explicit ConversionViews(bool json) : m_Terminal(json) {}

  /// Shows windows from now on. Fails with a message for the user if there can be none. The
  /// window's toolkit starts threads: REQUIRES that signals are taken already.
  [[nodiscard]] Expected<void> UseWindow();

  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override;
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override;
  [[nodiscard]] bool CanAsk() override { return m_Views->CanAsk(); }
  void SetPreview(int dialog, host::DialogPreview* preview) override {
    m_Views->SetPreview(dialog, preview);
  }

  /// Cancels the dialog on show, and every later one. Any thread.
  void RequestStop();
  /// Whether a person cancelled the progress dialog, or a stop was requested.
  [[nodiscard]] bool IsCancelled() const { return m_Cancelled || m_Terminal.IsCancelled(); }
  /// Whether the progress dialog was shown: the file was ready for the queue program.
  [[nodiscard]] bool HasWorked() const { return m_HasWorked; }
  /// The last message, in UTF-8; empty if there was none.
  [[nodiscard]] const std::string& Message() const { return m_Message; }

 private:
  class Watched;
  void SetDialog(CDialog* dialog);

  TerminalViews m_Terminal;
  host::DialogViews* m_Views = &m_Terminal;
  bool m_Cancelled = false;
  bool m_HasWorked = false;
  std::string m_Message;
  std::mutex m_Mutex;
  CDialog* m_Dialog = nullptr;  // on show; guarded
  bool m_Stopped = false;       // guarded
};

}  // namespace rastrel::cli
