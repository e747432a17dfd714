#pragma once

#include <memory>
#include <string>

#include "rastrel/printing/pipe_reader.h"
#include "rastrel/printing/stderr_parser.h"
#include "rastrel/printing/supervisor.h"

namespace PrintingThread {

/// Runs the RIP: it reads the prefix and the job, writes CFM2 text to its standard output, which
/// goes to the document, and reports on its standard error, which goes to the ticket.
class CRealPrintingThread : public CBasePrintingThread {
 public:
  /// `prefixPath` may be null: no prefix.
  CRealPrintingThread(CJobTicket* ticket, CSemaphore* semaphore, AbortFlag* abort, CCFM2* document,
                      const wchar_t* prefixPath);
  ~CRealPrintingThread() override;
  [[nodiscard]] bool Run() override;

 private:
  [[nodiscard]] bool MakePipes();
  [[nodiscard]] bool StartChild();
  [[nodiscard]] bool StartReaders();
  void WaitForEnd();
  void CollectOutput();
  void ReportExitStatus();

  static void OnProcessSignaled(CBBasePrintingThread& supervisor);
  static void OnProcessAbandoned(CBBasePrintingThread& supervisor);

  HANDLE m_hStdoutRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdoutWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrWrite = INVALID_HANDLE_VALUE;
  std::unique_ptr<CCPHelper> m_pProcess;
  std::int32_t m_ExitStatus = -1;
  std::unique_ptr<CStderrParser> m_pStderrParser;
  std::unique_ptr<CRipOutReader> m_pOutReader;
  std::wstring m_PrefixPath;
  bool m_bDone = false;
};

}  // namespace PrintingThread
