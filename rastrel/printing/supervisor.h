#pragma once

#include <cstdint>

#include "rastrel/cfm/cfm2.h"
#include "rastrel/cfm/cp_helper.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/mfc/sync.h"
#include "rastrel/printing/abort_flag.h"
#include "rastrel/printing/wait_table.h"

namespace rastrel::os {
struct ExitState;
}

namespace rastrel::printing {

/// The exit status of a child that has ended. One that a signal ended has none of its own; it
/// counts as 128 and the signal's number, as shells have it.
[[nodiscard]] std::int32_t ExitStatusOf(const os::ExitState& state);

}  // namespace rastrel::printing

/// What the supervisors of child processes have in common. A supervisor is no thread: it is an
/// object whose Run blocks the printing thread for the life of one child.
namespace PrintingThread {

/// The root of all supervisors: the wait.
class CBBasePrintingThread {
 public:
  CBBasePrintingThread() = default;
  CBBasePrintingThread(const CBBasePrintingThread&) = delete;
  CBBasePrintingThread& operator=(const CBBasePrintingThread&) = delete;
  virtual ~CBBasePrintingThread();

  /// One wait on the table's handles without a time limit, and the reaction of the entry that ended
  /// it. False if the wait itself failed, with words in the application log.
  [[nodiscard]] bool WaitOnce(CWaitTable& table);
  /// The second half of WaitOnce: what a result of the wait means.
  [[nodiscard]] bool ReactTo(std::uint32_t result, const CWaitTable& table);
};

/// The words that a supervisor logs of its child.
struct ChildWords {
  const wchar_t* exitCodeFailed;   ///< application log, with the system's error number
  const wchar_t* terminateFailed;  ///< application log, with the system's error number
  const wchar_t* exitedWith;       ///< job log, with the exit status
};

/// A supervisor of a print job.
class CBasePrintingThread : public CBBasePrintingThread {
 public:
  /// Nothing is owned; all must outlive the object.
  CBasePrintingThread(CSemaphore* semaphore, AbortFlag* abort, CCFM2* document, CJobTicket* ticket);
  ~CBasePrintingThread() override;
  /// Runs the child from its pipes to its exit status. True if it ended with status 0 or was ended
  /// on request; otherwise the error has been reported to the ticket.
  [[nodiscard]] virtual bool Run() = 0;

 protected:
  /// Whether temporary files and command lines are to be kept in sight ("Keep PS Files").
  [[nodiscard]] static bool KeepsFiles();
  /// Five lines of job log: a blank one, `ruler`, the command line, `closing`, a blank one.
  void LogCommandLine(const CCPHelper& process, const wchar_t* ruler, const wchar_t* closing);
  /// Takes the exit status over if the child has ended, closes its handle and logs the status.
  void CheckExit(CCPHelper& process, std::int32_t& exitStatus, const ChildWords& words);
  /// Ends the child if it still runs; that counts as status 0.
  void Terminate(CCPHelper& process, std::int32_t& exitStatus, const ChildWords& words);
  /// Error(JTE_LOW_RESOURCES) with words for the application log. Always false.
  bool LowOnResources(const char* words);

  /// What a supervisor's wait does when the abort semaphore ends it: it only logs. The flag ends
  /// the wait.
  static void OnAbortSignaled(CBBasePrintingThread& supervisor);
  static void OnAbortAbandoned(CBBasePrintingThread& supervisor);

  CSemaphore* m_pSemaphore;
  AbortFlag* m_pAbort;
  CCFM2* m_pDocument;
  CJobTicket* m_pTicket;
};

}  // namespace PrintingThread
