#pragma once

#include "rastrel/cfm/cfm2.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/printing/child_supervisor.h"

namespace PrintingThread {

/// A supervisor of a print job: it reports to the job's ticket and waits for the job's abort.
class CBasePrintingThread : public rastrel::printing::ChildSupervisor {
 public:
  /// The printing thread's objects. Nothing is owned; all must outlive the supervisor.
  struct Job {
    CJobTicket* ticket;
    CSemaphore* semaphore;  ///< released by an abort
    AbortFlag* abort;       ///< set before that
    CCFM2* document;
  };

  /// `exitedWith` is the job log's text for the child's exit status, which is its %i.
  CBasePrintingThread(const Job& job, const std::wstring& executable,
                      const rastrel::printing::ChildMessages& messages, const wchar_t* exitedWith);
  ~CBasePrintingThread() override;
  /// Runs the child from its pipes to its exit status. True if it ended with status 0 or was ended
  /// on request; otherwise the error has been reported to the ticket.
  [[nodiscard]] virtual bool Run() = 0;

 protected:
  /// Five lines of job log, if command lines and temporary files are kept ("Keep PS Files"): an
  /// empty one, `ruler`, the command line, `closing`, an empty one.
  void LogCommandLine(const wchar_t* ruler, const wchar_t* closing);
  /// Reports JTE_LOW_RESOURCES to the ticket. Always false.
  bool LowOnResources();
  void LogExitStatus() override;

  CSemaphore* m_pSemaphore;
  AbortFlag* m_pAbort;
  CCFM2* m_pDocument;
  CJobTicket* m_pTicket;

 private:
  const wchar_t* m_pExitedWith;
};

}  // namespace PrintingThread
