#include "rastrel/printing/child_supervisor.h"

#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/process.h"

using PrintingThread::AbortFlag;
using PrintingThread::CBBasePrintingThread;
using PrintingThread::CCPHelper;
using PrintingThread::CWaitTable;

namespace rastrel::printing {

// Any status above the known ones means an abnormal end.
std::int32_t ExitStatusOf(const os::ExitState& state) {
  constexpr int SignalBase = 128;
  return state.byItself ? state.status : SignalBase + state.status;
}

ChildSupervisor::ChildSupervisor(std::unique_ptr<CCPHelper> process, const ChildMessages& messages)
    : CBBasePrintingThread(messages.waitFailed),
      m_pProcess(std::move(process)),
      m_Messages(messages) {}

ChildSupervisor::~ChildSupervisor() {
  const bool isRead = m_pStderrParser || m_pOutReader;
  if (isRead && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE)
    static_cast<void>(os::Terminate(m_pProcess->m_hProcess));
  // A reader must be gone before its pipe is closed.
  JoinReaders();
  for (HANDLE* handle : {&m_hStdoutRead, &m_hStdoutWrite, &m_hStderrRead, &m_hStderrWrite})
    os::CloseHandle(*handle);
  os::ReleaseEndedChildren();
  if (m_pProcess->m_hProcess == INVALID_HANDLE_VALUE) return;
  if (m_Messages.stillAlive != nullptr) CAppLog::Instance().Write(m_Messages.stillAlive);
  os::CloseHandle(m_pProcess->m_hProcess);
}

bool ChildSupervisor::MakePipes(const PipeSizes& sizes) {
  const bool hasOutput = sizes.standardOutput != 0;
  if ((hasOutput && !os::CreatePipe(m_hStdoutRead, m_hStdoutWrite, sizes.standardOutput)) ||
      !os::CreatePipe(m_hStderrRead, m_hStderrWrite, sizes.standardError)) {
    CAppLog::Instance().Write(m_Messages.noPipes);
    return false;
  }
  if (hasOutput)
    m_hStdoutRead = os::MakeNotInheritable(m_hStdoutRead).ValueOr(INVALID_HANDLE_VALUE);
  m_hStderrRead = os::MakeNotInheritable(m_hStderrRead).ValueOr(INVALID_HANDLE_VALUE);
  if ((!hasOutput || m_hStdoutRead != INVALID_HANDLE_VALUE) &&
      m_hStderrRead != INVALID_HANDLE_VALUE)
    return true;
  CAppLog::Instance().Write(m_Messages.pipesInheritable);
  return false;
}

bool ChildSupervisor::StartProcess() {
  if (m_hStdoutWrite != INVALID_HANDLE_VALUE) m_pProcess->m_hStdOutput = m_hStdoutWrite;
  m_pProcess->m_hStdError = m_hStderrWrite;
  const bool started = m_pProcess->Start();
  // The readers see the end of a stream only if nobody here holds its write end.
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrWrite);
  if (started && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write(m_Messages.notStarted);
  CAppLog::Instance().Write(m_Messages.couldNotStart);
  return false;
}

bool ChildSupervisor::StartReaders() {
  if (m_pStderrParser->Start() && (!m_pOutReader || m_pOutReader->Start())) return true;
  CAppLog::Instance().Write(m_Messages.noReaders);
  return false;
}

void ChildSupervisor::AddAbort(CWaitTable& table, CSemaphore& semaphore) {
  table.Add(&semaphore.m_hObject, OnAbortSignaled, OnAbortAbandoned);
}

void ChildSupervisor::AddProcess(CWaitTable& table) {
  table.Add(&m_pProcess->m_hProcess, OnProcessSignaled, OnProcessAbandoned);
}

void ChildSupervisor::AddReaders(CWaitTable& table) {
  for (CPipeReader* reader : {static_cast<CPipeReader*>(m_pStderrParser.get()),
                              static_cast<CPipeReader*>(m_pOutReader.get())})
    if (reader != nullptr) table.Add(&reader->GetLossHandle(), OnReaderLost, OnReaderLost);
}

void ChildSupervisor::NoteLoss(const CPipeReader& reader) {
  if (!reader.HasLost() || std::exchange(m_bLostText, true)) return;
  CAppLog::Instance().Write("[Print] Low on resources");
}

void ChildSupervisor::WaitForProcess(CWaitTable& table, const AbortFlag* abort) {
  while (!m_bDone && (abort == nullptr || !*abort))
    if (!WaitOnce(table)) m_bDone = true;
}

void ChildSupervisor::Terminate() {
  if (m_pProcess->m_hProcess == INVALID_HANDLE_VALUE) return;
  const auto state = os::Terminate(m_pProcess->m_hProcess);
  os::CloseHandle(m_pProcess->m_hProcess);
  if (!state) {
    CAppLog::Instance().Printf(m_Messages.terminateFailed, state.Error().error);
    return;
  }
  m_ExitStatus = 0;
}

void ChildSupervisor::EndReaders() {
  EndStderrReader();
  EndStdoutReader();
}

void ChildSupervisor::EndStderrReader() {
  m_pStderrParser->Wait();
  NoteLoss(*m_pStderrParser);
  m_pStderrParser.reset();
  os::CloseHandle(m_hStderrRead);
}

void ChildSupervisor::EndStdoutReader() {
  if (m_pOutReader) {
    m_pOutReader->Wait();
    NoteLoss(*m_pOutReader);
  }
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
}

void ChildSupervisor::JoinReaders() {
  if (m_pStderrParser) m_pStderrParser->Wait();
  if (m_pOutReader) m_pOutReader->Wait();
  m_pStderrParser.reset();
  m_pOutReader.reset();
}

bool ChildSupervisor::TakeExit() {
  if (m_pProcess->m_hProcess == INVALID_HANDLE_VALUE) return false;
  const auto state = os::TakeExitState(m_pProcess->m_hProcess);
  if (state && state->running) return false;
  os::CloseHandle(m_pProcess->m_hProcess);
  if (state) {
    m_ExitStatus = ExitStatusOf(*state);
    LogExitStatus();
  } else {
    CAppLog::Instance().Printf(m_Messages.exitCodeFailed, state.Error().error);
    m_ExitStatus = -1;
  }
  CAppLog::Instance().Write(m_Messages.exited);
  m_bDone = true;
  return true;
}

void ChildSupervisor::OnAbortSignaled(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write(static_cast<ChildSupervisor&>(supervisor).m_Messages.canceled);
}

void ChildSupervisor::OnAbortAbandoned(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write(static_cast<ChildSupervisor&>(supervisor).m_Messages.abortAbandoned);
}

void ChildSupervisor::OnProcessSignaled(CBBasePrintingThread& supervisor) {
  static_cast<ChildSupervisor&>(supervisor).OnProcessEnded();
}

void ChildSupervisor::OnProcessAbandoned(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<ChildSupervisor&>(supervisor);
  CAppLog::Instance().Write(self.m_Messages.waitAbandoned);
  self.TakeExit();
}

void ChildSupervisor::OnReaderLost(CBBasePrintingThread& supervisor) {
  static_cast<ChildSupervisor&>(supervisor).m_bDone = true;
}

}  // namespace rastrel::printing
