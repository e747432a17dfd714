#pragma once

#include <memory>
#include <string>

#include "rastrel/printing/pipe_reader.h"
#include "rastrel/printing/stderr_parser.h"
#include "rastrel/printing/supervisor.h"

class CLQTicket;

namespace PrintingThread {

/// The supervisor of a CLQTicket's queue program: starts it, turns its reports into calls on the
/// ticket, and ends it when the job is aborted. Lives on the job's thread.
class CLQThread : public CBBasePrintingThread {
 public:
  /// What the ticket lends; all of it outlives the supervisor.
  struct Job {
    CLQTicket* ticket;
    CSemaphore* semaphore;   ///< released by an abort
    const AbortFlag* abort;  ///< set before that
    HANDLE giveUp;           ///< signalled, and stays so: the pipes' end is waited for no longer
  };

  /// `process` is the program, not yet started.
  CLQThread(const Job& job, std::unique_ptr<CCPHelper> process, std::wstring file);
  ~CLQThread() override;
  /// Runs the program from its pipes to its end. False if it could not be run: the ticket has had
  /// Error(JTE_LOW_RESOURCES) then. How the program ended is not looked at.
  [[nodiscard]] bool Run();

 private:
  [[nodiscard]] bool MakePipes();
  [[nodiscard]] bool StartChild();
  [[nodiscard]] bool StartReaders();
  void WaitForEnd();
  void EndReaders();
  void CloseStdout();
  bool TakeExit();

  static void OnAbortSignaled(CBBasePrintingThread& supervisor);
  static void OnAbortAbandoned(CBBasePrintingThread& supervisor);
  static void OnProcessSignaled(CBBasePrintingThread& supervisor);
  static void OnProcessAbandoned(CBBasePrintingThread& supervisor);

  HANDLE m_hStdoutRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdoutWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrWrite = INVALID_HANDLE_VALUE;
  std::unique_ptr<CCPHelper> m_pProcess;
  std::int32_t m_ExitStatus = 0;
  std::unique_ptr<CStderrParser> m_pStderrParser;
  std::unique_ptr<CRipOutReader> m_pOutReader;
  CLQTicket* m_pTicket;
  CSemaphore* m_pSemaphore;
  const AbortFlag* m_pAbort;
  std::wstring m_File;
  bool m_bDone = false;
  HANDLE m_hGiveUp;
  CSemaphore m_EndOfStdout{0, 1};
  CSemaphore m_EndOfStderr{0, 1};
};

}  // namespace PrintingThread
