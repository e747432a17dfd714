#pragma once

#include <memory>
#include <string>

#include "rastrel/conversion/dialogs/cmd_line_q.h"
#include "rastrel/conversion/dialogs/dialog.h"

/// Watches the queue program work on one file. DoModal starts it and returns OkCommand when it has
/// reported success, CancelCommand when it has reported failure or a person gave up; then the
/// program and its threads are gone. Without a report it stays up until it is given up, also when
/// the program has ended: the report is the only thing that counts.
class CQProgressDlg : public CDialog {
 public:
  static constexpr int ResourceId = 1003;
  // Controls.
  static constexpr int CancelButton = 2005;
  static constexpr int StageText = 2021;
  static constexpr int ProgressBar = 2022;
  // Posted messages.
  static constexpr unsigned WorkEndedMessage = 0x8078;  ///< the job's thread is through
  static constexpr unsigned OtherMessage = 0x8079;      ///< nobody posts it here
  static constexpr unsigned StateMessage = 0x807A;      ///< originator; JT_INFO
  static constexpr unsigned ProgressMessage = 0x807B;   ///< originator; percentage

  /// Messages that may wait. Beyond it, those that the next one of their kind makes worthless are
  /// dropped, so that a program that floods takes no memory.
  static constexpr std::size_t WaitingLimit = 10'000;

  /// `parent` may be null. If the queue program is missing, a message says so, and the dialog runs
  /// without a job.
  CQProgressDlg(const wchar_t* file, CWnd* parent);
  /// Ends with the job.
  ~CQProgressDlg() override;

  bool PostMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;
  [[nodiscard]] std::span<const Message> GetMessageMap() const override;
  void DoDataExchange(bool fromControls) override;
  bool OnInitDialog() override;
  /// Aborts a job that still runs.
  void OnLeave() noexcept override;
  /// From the start of the job until the dialog has handled the message of its end. The message is
  /// posted after the job has ended, and in between nothing may be in the queue: the dialog ends by
  /// itself even so.
  [[nodiscard]] bool MayEndByItself() const override;

  /// Whether the user or the view gave up the last showing, so that the caller removes incomplete
  /// output.
  [[nodiscard]] bool IsCancelled() const { return m_bCancelled; }

 private:
  std::intptr_t OnState(JT_INFO code);
  std::intptr_t OnProgress(std::intptr_t percent);
  std::intptr_t OnWorkEnded();
  std::intptr_t OnCancelButton();
  void EndAfterJob(int result);
  void AbortJob();

  std::wstring m_File;
  std::unique_ptr<CCmdLineQ> m_pQueue;
  bool m_bCancelled = false;
  bool m_bUnderWay = false;  // a job was started, and the message of its end is not handled yet
  [[maybe_unused]] int m_Spare = 0;
  int m_Pending = 0;  // the dialog's result once the job has ended; 0: none yet
};
