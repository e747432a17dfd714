#pragma once

#include <string>

#include "rastrel/printing/job_supervisor.h"

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
  void AddArguments();
  void MakeReaders();
  void WaitForEnd();
  void CollectOutput();
  void ReportExitStatus();

  std::wstring m_PrefixPath;
};

}  // namespace PrintingThread
