#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "rastrel/platform/host/dialogs.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/mfc/sync.h"

namespace rastrel::cli {

/// Shows dialogs on the terminal: title, stage, bar and elapsed time as one line that is drawn over
/// and over; plain lines where standard error is no terminal; JSON lines on standard
/// output if asked for. q, Escape, Ctrl-C and a stop request cancel; a dialog that only a person
/// could end is cancelled by itself, since there is nothing to wait for. A dialog with controls to
/// be filled in is asked line by line (ControlPrompt) if input and standard error are terminals,
/// else it is cancelled, too. The terminal has its old state when a dialog is over.
class TerminalViews : public host::DialogViews {
 public:
  explicit TerminalViews(bool json) : m_Json(json) {}

  [[nodiscard]] std::unique_ptr<host::DialogView> MakeView(host::DialogLogic& dialog) override;
  void ShowMessage(CWnd* parent, const std::wstring& text, const std::wstring& title) override;

  /// Cancels the dialog on show and every later one. Any thread.
  void RequestStop() {
    m_Stopped = true;
    m_Stop.Unlock();
  }
  /// Whether a person cancelled, or a stop was requested.
  [[nodiscard]] bool IsCancelled() const { return m_Stopped; }

 private:
  class View;
  class Asked;
  bool m_Json;
  std::atomic<bool> m_Stopped = false;
  CSemaphore m_Stop{0, 1};
};

/// The host in force with other dialog views, for this object's life.
class ViewsHost : public host::Host {
 public:
  explicit ViewsHost(host::DialogViews& views);
  ~ViewsHost() override;
  ViewsHost(const ViewsHost&) = delete;
  ViewsHost& operator=(const ViewsHost&) = delete;

  [[nodiscard]] host::Settings& GetSettings() override { return m_Inner.GetSettings(); }
  [[nodiscard]] host::Directories& GetDirectories() override { return m_Inner.GetDirectories(); }
  [[nodiscard]] host::Translation& GetTranslation() override { return m_Inner.GetTranslation(); }
  void BeginWaitCursor() override { m_Inner.BeginWaitCursor(); }
  [[nodiscard]] host::DialogViews& GetDialogViews() override { return m_Views; }

 private:
  host::Host& m_Inner;
  host::DialogViews& m_Views;
};

/// Whether these bytes from a terminal hold a key that cancels: q, Q, Ctrl-C, or Escape by itself.
/// An escape at the end of the bytes may be the beginning of another key: `more` is set then.
[[nodiscard]] bool HoldsCancelKey(const std::string& bytes, bool& more);

}  // namespace rastrel::cli
