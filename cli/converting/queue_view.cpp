#include "cli/converting/queue_view.h"

#include "rastrel/platform/standalone/window_views.h"

namespace rastrel::cli {
namespace {

void PostCancel(CQProgressDlg& dialog) {
  dialog.PostMessage(CDialog::CommandMessage, host::CancelCommand, 0);
}

}  // namespace

Expected<void> QueueView::UseWindow() {
  const auto views = host::LoadWindowViews();
  if (!views) return FailureOf("--window: no window can be shown: " + Describe(views.Error()));
  m_Views = *views;
  return {};
}

int QueueView::Show(CQProgressDlg& dialog) {
  const ViewsHost host(*m_Views);
  SetDialog(&dialog);
  const int result = dialog.DoModal();
  SetDialog(nullptr);
  // The terminal gives a dialog up by itself when only a person could end it; a window never does.
  m_Cancelled = m_Views != &m_Terminal && dialog.IsCancelled();
  return result;
}

void QueueView::SetDialog(CQProgressDlg* dialog) {
  const std::lock_guard lock(m_Mutex);
  m_Dialog = dialog;
  if (m_Stopped && dialog != nullptr) PostCancel(*dialog);
}

void QueueView::RequestStop() {
  m_Terminal.RequestStop();
  const std::lock_guard lock(m_Mutex);
  m_Stopped = true;
  if (m_Dialog != nullptr) PostCancel(*m_Dialog);
}

}  // namespace rastrel::cli
