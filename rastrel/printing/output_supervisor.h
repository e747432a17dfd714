#pragma once

#include <memory>

#include "rastrel/printing/output.h"
#include "rastrel/printing/stderr_parser.h"
#include "rastrel/printing/supervisor.h"

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
  [[nodiscard]] bool MakePipes();
  [[nodiscard]] bool StartChild();
  void WriteInput();
  void WaitForEnd();
  void ReportExitStatus();

  static void OnProcessSignaled(CBBasePrintingThread& supervisor);
  static void OnProcessAbandoned(CBBasePrintingThread& supervisor);

  std::unique_ptr<Output> m_pOutput;
  HANDLE m_hStdinRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdinWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hStdoutRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdoutWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrWrite = INVALID_HANDLE_VALUE;
  std::unique_ptr<CCPHelper> m_pProcess;
  std::int32_t m_ExitStatus = -1;
  std::unique_ptr<CStderrParser> m_pStderrParser;
  bool m_bDone = false;
};

}  // namespace PrintingThread
