#pragma once

#include <mutex>

#include "rastrel/conversion/clq_ticket.h"

class CQProgressDlg;

/// The ticket of a conversion with a progress dialog: the queue program's reports become messages
/// that are posted to the dialog. Nothing else passes between the threads.
class CCmdLineQ : public CLQTicket {
 public:
  using CLQTicket::CLQTicket;
  ~CCmdLineQ() override;

  /// Starts the program, and on success lets its reports go to the dialog, which is not owned and
  /// outlives the job. No report is lost on the way.
  [[nodiscard]] bool StartFor(CQProgressDlg& dialog, const wchar_t* file);

  /// Whether the job has ended and its message could not be posted for want of memory. Any thread.
  [[nodiscard]] bool IsEndLost() const { return m_bEndLost; }

  /// Posts the state, if it is one that the dialog shows and there is a dialog.
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  /// Posts the percentage, if there is a dialog.
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;

 protected:
  /// Posts that the job has ended.
  void OnEnd() override;

 private:
  bool Post(unsigned message, std::uintptr_t wParam, std::intptr_t lParam);

  CQProgressDlg* m_pDialog = nullptr;
  rastrel::os::SharedWord<bool> m_bEndLost = false;
  std::mutex m_Mutex;  // a child may report before it is known that it was started
};
