#include "rastrel/conversion/dialogs/cmd_line_q.h"

#include "rastrel/conversion/dialogs/q_progress_dlg.h"

CCmdLineQ::~CCmdLineQ() { Join(); }

bool CCmdLineQ::StartFor(CQProgressDlg& dialog, const wchar_t* file) {
  const std::scoped_lock lock(m_Mutex);
  m_bEndLost = false;
  if (!Start(file)) return false;
  m_pDialog = &dialog;
  return true;
}

void CCmdLineQ::Info(JT_INFO code, JT_ORIGINATOR originator) {
  switch (code) {
    case JTI_CLQ_SUCCESS:
    case JTI_CLQ_FAILURE:
    case JTI_INITIALISING:
    case JTI_INTERPRETING:
    case JTI_CONVERTING:
    case JTI_FLUSHING:
      Post(CQProgressDlg::StateMessage, static_cast<std::uintptr_t>(originator), code);
      break;
    default: break;
  }
}

void CCmdLineQ::Progress(unsigned short percent, JT_ORIGINATOR originator) {
  Post(CQProgressDlg::ProgressMessage, static_cast<std::uintptr_t>(originator), percent);
}

void CCmdLineQ::OnEnd() {
  if (!Post(CQProgressDlg::WorkEndedMessage, JTO_CLQ, 0)) m_bEndLost = true;
}

bool CCmdLineQ::Post(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  const std::scoped_lock lock(m_Mutex);
  return m_pDialog != nullptr && m_pDialog->PostMessage(message, wParam, lParam);
}
