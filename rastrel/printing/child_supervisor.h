#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "rastrel/platform/mfc/sync.h"
#include "rastrel/platform/os/handle.h"
#include "rastrel/printing/abort_flag.h"
#include "rastrel/printing/child_process.h"
#include "rastrel/printing/pipe_reader.h"
#include "rastrel/printing/stderr_parser.h"
#include "rastrel/printing/supervisor.h"

namespace rastrel::os {
struct ExitState;
}

namespace rastrel::printing {

/// The exit status of a child that has ended. A child that a signal ended has no status; 128 plus
/// the signal's number counts as its status, as in a shell.
[[nodiscard]] std::int32_t ExitStatusOf(const os::ExitState& state);

/// The texts that one supervisor writes to the application log, in the order of its steps. They are
/// string literals.
struct ChildMessages {
  const char* noPipes;               ///< step 1: a pipe could not be made
  const char* pipesInheritable;      ///< step 1: a read end could not be kept from the child
  const char* notStarted;            ///< step 2: the process did not start
  const char* couldNotStart;         ///< step 2: follows notStarted
  const char* noReaders;             ///< step 4: a reader did not start
  const wchar_t* waitFailed;         ///< step 5: %u is the system's error number
  const char* canceled;              ///< step 5: the abort semaphore was released
  const char* abortAbandoned;        ///< step 5: the abort semaphore was abandoned
  const char* waitAbandoned;         ///< step 5: the process's handle was abandoned
  const wchar_t* exitCodeFailed;     ///< step 5: %i is the system's error number
  const char* exited;                ///< step 5: the process has ended
  const wchar_t* terminateFailed;    ///< step 6: %i is the system's error number
  const char* stillAlive = nullptr;  ///< the destructor found a process; null: it says nothing
};

/// Bytes that the pipes of a child hold.
struct PipeSizes {
  std::size_t standardOutput;  ///< 0: no pipe; the child has this process's standard output
  std::size_t standardError;
};

/// The supervision of one child process, from its pipes to its end. Every supervisor derives from
/// it, and its Run takes these steps in this order:
///
///   1. MakePipes       a pipe for each stream that is read; the read ends stay here
///   2. StartProcess    starts the child, and closes the child's ends of the pipes here
///   3. (its input)     only the output engine has one
///   4. StartReaders    standard error first, then standard output
///   5. WaitForProcess  until the child ends, the abort flag is set, or the wait fails
///   6. Terminate       ends the child if it still runs; nothing if step 5 saw its end
///   7. EndReaders      joins each reader, then closes its pipe: standard error first
///   8. (its report)    the exit status becomes the supervisor's result
///
/// The order matters. A pipe ends only when nobody holds its write end, so 2 closes those before 4
/// reads. A reader ends only with its pipe, so 6 comes before 7. A read end is in use until its
/// reader is joined. A step that fails has logged its message; the supervisor reports the error and
/// returns. The destructor clears up after any step. One thread uses the object.
class ChildSupervisor : public PrintingThread::CBBasePrintingThread {
 public:
  /// `process` is a child that is not yet started. `messages` must outlive the object.
  ChildSupervisor(std::unique_ptr<PrintingThread::CCPHelper> process,
                  const ChildMessages& messages);
  /// Joins the readers, closes the pipes, and closes the process's handle if there is one. A
  /// process whose readers still run, as on the road of an exception, is ended first: they end with
  /// it.
  ~ChildSupervisor() override;

 protected:
  /// Step 1. False if a pipe could not be made or kept from the child.
  [[nodiscard]] bool MakePipes(const PipeSizes& sizes);
  /// Step 2. The child's arguments are set before. False if it did not start.
  [[nodiscard]] bool StartProcess();
  /// Step 4. Starts m_pStderrParser, and m_pOutReader if there is one; the supervisor has made
  /// them. False if either did not start.
  [[nodiscard]] bool StartReaders();
  /// The entries of step 5's table: the abort semaphore, whose release is only logged, since the
  /// flag ends the wait; and the process. The lower entry counts if both are signalled.
  static void AddAbort(PrintingThread::CWaitTable& table, CSemaphore& semaphore);
  void AddProcess(PrintingThread::CWaitTable& table);
  /// The entries after them: a reader that lost a part of its stream ends the wait.
  void AddReaders(PrintingThread::CWaitTable& table);
  /// Step 5. Waits until m_bDone or, unless `abort` is null, until that flag is set. A wait that
  /// fails sets m_bDone.
  void WaitForProcess(PrintingThread::CWaitTable& table, const PrintingThread::AbortFlag* abort);
  /// Step 6. A child that was ended here counts as one with status 0. If it could not be ended, the
  /// status stays as it was. Its handle is closed in either case.
  void Terminate();
  /// Step 7, both halves.
  void EndReaders();
  void EndStderrReader();
  void EndStdoutReader();
  /// Whether a reader that has ended had lost a part of its stream for want of memory (logged): the
  /// job has failed then, whatever the child's status. For step 8.
  [[nodiscard]] bool HasLostText() const { return m_bLostText; }
  /// Joins the readers that there are, without closing their pipes. For a derived destructor, if
  /// the readers use members of the derived class.
  void JoinReaders();

  /// Takes the exit status if the child has ended: closes its handle, sets m_ExitStatus (-1 if the
  /// system has no status to give), logs, and sets m_bDone. False if the child still runs.
  bool TakeExit();
  /// Step 5's reaction to the process: TakeExit, and whatever else the supervisor does then.
  virtual void OnProcessEnded() { TakeExit(); }
  /// Logs m_ExitStatus, which the child ended with.
  virtual void LogExitStatus() = 0;

  static void OnAbortSignaled(CBBasePrintingThread& supervisor);
  static void OnAbortAbandoned(CBBasePrintingThread& supervisor);
  static void OnProcessSignaled(CBBasePrintingThread& supervisor);
  static void OnProcessAbandoned(CBBasePrintingThread& supervisor);
  static void OnReaderLost(CBBasePrintingThread& supervisor);

  HANDLE m_hStdoutRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStdoutWrite = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrRead = INVALID_HANDLE_VALUE;
  HANDLE m_hStderrWrite = INVALID_HANDLE_VALUE;
  std::unique_ptr<PrintingThread::CCPHelper> m_pProcess;
  std::int32_t m_ExitStatus = -1;
  std::unique_ptr<CBaseStderrParser> m_pStderrParser;
  std::unique_ptr<CRipOutReader> m_pOutReader;
  bool m_bDone = false;

 private:
  void NoteLoss(const CPipeReader& reader);

  const ChildMessages& m_Messages;
  bool m_bLostText = false;
};

}  // namespace rastrel::printing
