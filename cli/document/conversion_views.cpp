#include "cli/document/conversion_views.h"

#include <span>
#include <utility>

#include "rastrel/conversion/dialogs/q_progress_dlg.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/standalone/window_views.h"

namespace rastrel::cli {
namespace {

void PostCancel(CDialog& dialog) {
  dialog.PostMessage(CDialog::CommandMessage, host::CancelCommand, 0);
}

}  // namespace

// A view that says when its dialog is on show.
class ConversionViews::Watched : public host::DialogView {
 public:
  Watched(ConversionViews& views, host::DialogLogic& dialog, std::unique_ptr<DialogView> inner)
      : m_Views(views), m_Dialog(dialog), m_Inner(std::move(inner)) {}

  void SetText(int control, const std::wstring& text) override { m_Inner->SetText(control, text); }
  void SetRange(int control, int lowest, int highest) override {
    m_Inner->SetRange(control, lowest, highest);
  }
  void SetPosition(int control, int position) override { m_Inner->SetPosition(control, position); }
  void SetValue(int control, const host::ControlValue& value) override {
    m_Inner->SetValue(control, value);
  }
  void SetItems(int control, std::span<const std::wstring> items) override {
    m_Inner->SetItems(control, items);
  }
  void SetEnabled(int control, bool enabled) override { m_Inner->SetEnabled(control, enabled); }
  void SetVisible(int control, bool visible) override { m_Inner->SetVisible(control, visible); }
  [[nodiscard]] host::ControlValue GetValue(int control) override {
    return m_Inner->GetValue(control);
  }
  void RunModal() override;

 private:
  ConversionViews& m_Views;
  host::DialogLogic& m_Dialog;
  std::unique_ptr<DialogView> m_Inner;
};

void ConversionViews::Watched::RunModal() {
  m_Views.SetDialog(dynamic_cast<CDialog*>(&m_Dialog));
  m_Inner->RunModal();
  m_Views.SetDialog(nullptr);
  const auto* progress = dynamic_cast<const CQProgressDlg*>(&m_Dialog);
  if (progress == nullptr) return;
  m_Views.m_HasWorked = true;
  // The terminal gives a dialog up by itself when only a person could end it; a window never does.
  if (m_Views.m_Views != &m_Views.m_Terminal && progress->IsCancelled()) m_Views.m_Cancelled = true;
}

Expected<void> ConversionViews::UseWindow() {
  const auto views = host::LoadWindowViews();
  if (!views) return FailureOf("--window: no window can be shown: " + Describe(views.Error()));
  m_Views = *views;
  return {};
}

std::unique_ptr<host::DialogView> ConversionViews::MakeView(host::DialogLogic& dialog) {
  auto view = m_Views->MakeView(dialog);
  if (!view) return nullptr;
  return std::make_unique<Watched>(*this, dialog, std::move(view));
}

// A message ends the command, which repeats it; in windows a person reads it first.
void ConversionViews::ShowMessage(CWnd* parent, const std::wstring& text,
                                  const std::wstring& title) {
  m_Message = os::Utf8FromWide(text);
  if (m_Views != &m_Terminal) m_Views->ShowMessage(parent, text, title);
}

void ConversionViews::SetDialog(CDialog* dialog) {
  const std::lock_guard lock(m_Mutex);
  m_Dialog = dialog;
  if (m_Stopped && dialog != nullptr) PostCancel(*dialog);
}

void ConversionViews::RequestStop() {
  m_Terminal.RequestStop();
  const std::lock_guard lock(m_Mutex);
  m_Stopped = true;
  if (m_Dialog != nullptr) PostCancel(*m_Dialog);
}

}  // namespace rastrel::cli
