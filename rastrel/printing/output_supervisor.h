#pragma once

#include <memory>

#include "rastrel/printing/job_supervisor.h"
#include "rastrel/printing/output.h"

namespace PrintingThread {

/// Runs the output engine: it gets the document's CFM2 text on its standard input, all of it at
/// once, and reports on its standard error. Its standard output is thrown away. The twin of
/// CRealPrintingThread.
class CRealReprintingThread : public CBasePrintingThread {
 public:
  CRealReprintingThread(CSemaphore* semaphore, AbortFlag* abort, CCFM2* document,
                        CJobTicket* ticket);
  ~CRealReprintingThread() override;
  [[nodiscard]] bool Run() override;

 private:
  [[nodiscard]] bool MakeThreePipes();
  void AddArguments();
  [[nodiscard]] bool StartWithInput();
  void WriteInput();
  void WaitForEnd();
  void ReportExitStatus();

  std::unique_ptr<Output> m_pOutput;
  HANDLE m_hStdinRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdinWrite = INVALID_HANDLE_VALUE;
};

}  // namespace PrintingThread
