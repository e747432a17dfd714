#pragma once

#include <memory>
#include <string>

#include "rastrel/job/job_messaging.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/shared_word.h"
#include "rastrel/printing/abort_flag.h"

namespace rastrel::os {
class Thread;
}

/// The originator of the queue program's reports.
inline constexpr JT_ORIGINATOR JTO_CLQ{4};

/// A job ticket for one file: runs the queue program on it, on a thread of its own. It has no
/// record and no settings. A derived class gets the program's reports by overriding the operations
/// of CJobMessaging. Used on the host's thread; the reports come on others.
class CLQTicket : public CJobMessaging {
 public:
  /// Library path of the queue program.
  explicit CLQTicket(const std::wstring& executable);
  CLQTicket(const CLQTicket&) = delete;
  CLQTicket& operator=(const CLQTicket&) = delete;

  // Reports: nothing is done with them here but with Log, whose text goes to the application log,
  // cut to 1,021 characters more than its format has, with a line end.
  void Warning(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(const wchar_t* text, JT_ORIGINATOR originator) override;
  void Error(JT_ERROR code, JT_ORIGINATOR originator) override;
  void Info(JT_INFO code, JT_ORIGINATOR originator) override;
  void Progress(unsigned short percent, JT_ORIGINATOR originator) override;
  void Log(const wchar_t* format, ...) override;

  /// Joins. A derived class that overrides reports joins in its own destructor, as they come until
  /// then.
  virtual ~CLQTicket();
  /// Starts the program on a file. False if either is missing, if a job runs already, or if the
  /// system has no semaphore or thread to give; then nothing runs.
  [[nodiscard]] virtual bool Start(const wchar_t* file);
  /// Ends the job early, and returns when it has ended. The program is killed at once. Its guardian
  /// (docs/formats/queue-program.md), which holds its standard error, is waited for, but no longer
  /// than CLQThread::GuardianTimeout. Does nothing without a job.
  virtual void Abort();
  /// Waits for the job's end without a limit. Nothing without a job, so it may be called again.
  virtual void Join();

  /// Whether a job was started and has not ended by itself; it may end at any time. Like all but
  /// the reports, for the host's thread.
  [[nodiscard]] bool IsRunning() const { return m_hThread != nullptr && !m_bEnded; }

 protected:
  /// The job has ended, and IsRunning says so; after the last report and on the job's thread.
  virtual void OnEnd();

 private:
  [[nodiscard]] bool TakeLock();
  void FreeLock();
  void Work(const std::wstring& file);

  std::wstring m_ExePath;
  std::unique_ptr<rastrel::os::Thread> m_hThread;
  std::unique_ptr<CSemaphore> m_pSemaphore;
  std::unique_ptr<CSingleLock> m_pLock;
  PrintingThread::AbortFlag m_bAbort = false;
  std::unique_ptr<CSemaphore>
      m_pGiveUp;  // signalled by an abort whose wait for the guardian timed out
  std::unique_ptr<CSemaphore> m_pEnd;  // signalled when the job has ended
  rastrel::os::SharedWord<bool> m_bEnded = false;
};
