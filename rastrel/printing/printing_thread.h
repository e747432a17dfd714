#pragma once

#include <memory>
#include <mutex>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/printing/abort_flag.h"

class CCFM2;
class CCFMFile;
class CJobTicket;
namespace rastrel::os {
class Thread;
}

namespace PrintingThread {

/// Turns one ticket into output on a thread of its own: through the RIP and the output engine, or,
/// for a ticket whose pages are on disk already, through the output engine alone. Made and owned by
/// the ticket (CJobTicket::PrintJob); runs once. A host reaches it for Abort only.
class RASTREL_API CPrintingThread {
 public:
  /// The ticket is not owned and must outlive the thread.
  explicit CPrintingThread(CJobTicket* ticket);
  CPrintingThread(const CPrintingThread&) = delete;
  CPrintingThread& operator=(const CPrintingThread&) = delete;
  /// Joins.
  virtual ~CPrintingThread();

  /// Checks that both child programs exist and that nobody else may change them, and starts the
  /// thread. Called on the host's thread, once. False if a program is missing or not to be trusted,
  /// or the system has no semaphore or thread to give. The application log has the reason; a
  /// program that is missing or not trusted is an error on the ticket too.
  [[nodiscard]] bool Start();
  /// Waits for the thread, without a time limit, and frees the run's resources. Does nothing
  /// without a thread. Called on the host's thread.
  void Join();
  /// Asks the job to end early and returns at once. Any thread may call it, any number of times,
  /// also while another waits in Join; the object must still exist. A call before a child runs
  /// counts as well. The job ends at JS_HOLDING with JTE_ABNORMAL in every stage, unless it has
  /// ended already.
  void Abort();
  /// Whether the thread has ended, so that Join returns at once. After an end by an exception the
  /// ticket has no report of it, and this is the only sign. Any thread.
  [[nodiscard]] bool HasEnded() const { return m_bEnded; }

 private:
  void ThreadMain();
  [[nodiscard]] bool Run();
  [[nodiscard]] bool RunInstallJob();
  [[nodiscard]] bool RunRipAndOutput();
  [[nodiscard]] bool RunOutputOnly();
  [[nodiscard]] bool RipPages(CCFM2& document);
  [[nodiscard]] bool OutputPages(CCFM2& document);
  [[nodiscard]] bool RunRip(CCFM2& document, const wchar_t* prefixPath);
  [[nodiscard]] bool RunOutput(CCFM2& document);
  [[nodiscard]] bool SpoolPages(CCFMFile& pages);
  void PrepareSpoolDirectory(const std::wstring& directory);
  static void DiscardPages(CCFM2& document);

  CJobTicket* m_pTicket;
  std::unique_ptr<rastrel::os::Thread> m_hThread;
  std::unique_ptr<CSemaphore> m_pSemaphore;
  std::unique_ptr<CSingleLock> m_pLock;
  AbortFlag m_bAbort = false;
  rastrel::os::SharedWord<bool> m_bEnded = false;
  std::mutex m_AbortMutex;  // an abort may meet the end of Join
};

}  // namespace PrintingThread
