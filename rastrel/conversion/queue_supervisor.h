#pragma once

#include <memory>
#include <string>

#include "rastrel/printing/child_supervisor.h"

class CLQTicket;

namespace PrintingThread {

/// The supervisor of a CLQTicket's queue program: starts it, turns its reports into calls on the
/// ticket, and ends it when the job is aborted. Lives on the job's thread.
class CLQThread : public rastrel::printing::ChildSupervisor {
 public:
  /// The ticket and its objects. Nothing is owned; all must outlive the supervisor.
  struct Job {
    CLQTicket* ticket;
    CSemaphore* semaphore;   ///< released by an abort
    const AbortFlag* abort;  ///< set before that
    HANDLE giveUp;           ///< once it is signalled, the readers end without their pipes' end
  };

  /// Milliseconds that an abort waits for the queue program's guardian, after the program itself
  /// has been killed. The guardian removes the program's files, and holds its standard error
  /// until that is done; the time is enough to remove the files of a large job. After it the
  /// readers end, whoever holds the pipes.
  static constexpr int GuardianTimeout = 5000;
  /// The timeout in use. Only a test sets it to something else than GuardianTimeout.
  static int s_GuardianTimeout;

  /// `process` is the program, not yet started. `file` is the library path of the file to convert.
  CLQThread(const Job& job, std::unique_ptr<CCPHelper> process, std::wstring file);
  ~CLQThread() override;
  /// Runs the program from its pipes to its end. False if it could not be run: the ticket has had
  /// Error(JTE_LOW_RESOURCES) then, and also if memory ran out for its messages. The program's
  /// standard output is read and dropped. The program's exit status is logged and otherwise
  /// ignored.
  [[nodiscard]] bool Run();

 private:
  [[nodiscard]] bool RunProgram();
  void AddArguments();
  void MakeReaders();
  [[nodiscard]] bool LowOnResources();
  void CloseStdout();
  void OnProcessEnded() override;
  void LogExitStatus() override;

  CLQTicket* m_pTicket;
  CSemaphore* m_pSemaphore;
  const AbortFlag* m_pAbort;
  std::wstring m_File;
  HANDLE m_hGiveUp;
  CSemaphore m_EndOfStdout{0, 1};
  CSemaphore m_EndOfStderr{0, 1};
};

}  // namespace PrintingThread
