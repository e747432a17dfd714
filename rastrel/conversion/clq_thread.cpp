#include "rastrel/conversion/clq_thread.h"

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/queue_child.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"

namespace conversion = rastrel::conversion;
namespace os = rastrel::os;

namespace PrintingThread {

namespace {

constexpr std::size_t StdoutPipeSize = 16'384;
constexpr std::size_t StderrPipeSize = 512;
constexpr const wchar_t* WaitFailed = L"[CLQ]: WaitForMultipleObjects failed. Error: %u";
constexpr const wchar_t* ExitCodeFailed = L"[CLQ]: GetExitCodeProcess failed on Q: %i";
constexpr const wchar_t* TerminateFailed = L"[CLQ]: Couldn't terminate Q: %i";

}  // namespace

CLQThread::CLQThread(const Job& job, std::unique_ptr<CCPHelper> process, std::wstring file)
    : m_pProcess(std::move(process)),
      m_pTicket(job.ticket),
      m_pSemaphore(job.semaphore),
      m_pAbort(job.abort),
      m_File(std::move(file)),
      m_hGiveUp(job.giveUp) {}

CLQThread::~CLQThread() {
  // A reader that was started must be gone before its pipe is closed.
  m_EndOfStderr.Unlock();
  m_EndOfStdout.Unlock();
  if (m_pStderrParser) m_pStderrParser->Wait();
  if (m_pOutReader) m_pOutReader->Wait();
  m_pStderrParser.reset();
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrRead);
  os::CloseHandle(m_hStderrWrite);
  if (m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) {
    CAppLog::Instance().Write("[CLQ] Rip handle still alive");
    os::CloseHandle(m_pProcess->m_hProcess);
  }
}

bool CLQThread::Run() {
  if (!MakePipes() || !StartChild() || !StartReaders()) {
    m_pTicket->Error(JTE_LOW_RESOURCES, JTO_CLQ);
    return false;
  }
  WaitForEnd();
  EndReaders();
  return true;
}

bool CLQThread::MakePipes() {
  if (!os::CreatePipe(m_hStdoutRead, m_hStdoutWrite, StdoutPipeSize) ||
      !os::CreatePipe(m_hStderrRead, m_hStderrWrite, StderrPipeSize)) {
    CAppLog::Instance().Write("[CLQ]: Couldn't create pipes (1).");
    return false;
  }
  m_hStdoutRead = os::MakeNotInheritable(m_hStdoutRead);
  m_hStderrRead = os::MakeNotInheritable(m_hStderrRead);
  if (m_hStdoutRead != INVALID_HANDLE_VALUE && m_hStderrRead != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write("[CLQ]: Couldn't set pipes non inheritable.");
  return false;
}

bool CLQThread::StartChild() {
  m_pProcess->m_hStdOutput = m_hStdoutWrite;
  m_pProcess->m_hStdError = m_hStderrWrite;
  // The page measuring gives the first two the other way round.
  for (const wchar_t* argument : {L"-ps", L"-q", m_File.c_str()}) m_pProcess->AddArgument(argument);
  const bool started = m_pProcess->Start();
  // The readers see the end of a stream only if nobody here holds its write end.
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrWrite);
  if (started && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write("[CLQ]: Didn't start the Q");
  CAppLog::Instance().Write("[CLQ]: Couldn't start rip");
  return false;
}

bool CLQThread::StartReaders() {
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_CLQ);
  m_pOutReader = std::make_unique<CRipOutReader>(&m_hStdoutRead);
  for (const HANDLE end : {m_hGiveUp, m_EndOfStderr.m_hObject}) m_pStderrParser->EndWith(end);
  for (const HANDLE end : {m_hGiveUp, m_EndOfStdout.m_hObject}) m_pOutReader->EndWith(end);
  if (m_pStderrParser->Start() && m_pOutReader->Start()) return true;
  CAppLog::Instance().Write("[CLQ]: Couldn't start parsers.");
  conversion::Terminate(*m_pProcess, m_ExitStatus, TerminateFailed);
  return false;
}

void CLQThread::WaitForEnd() {
  CWaitTable table;
  table.Add(&m_pSemaphore->m_hObject, OnAbortSignaled, OnAbortAbandoned);
  table.Add(&m_pProcess->m_hProcess, OnProcessSignaled, OnProcessAbandoned);
  while (!m_bDone && !*m_pAbort)
    if (!conversion::WaitOnce(*this, table, WaitFailed)) m_bDone = true;
  conversion::Terminate(*m_pProcess, m_ExitStatus, TerminateFailed);
}

void CLQThread::EndReaders() {
  m_pStderrParser->Wait();
  m_pStderrParser.reset();
  os::CloseHandle(m_hStderrRead);
  if (m_pOutReader) m_pOutReader->Wait();
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
}

// Ends the stdout reader while others may hold the pipe's other end still.
void CLQThread::CloseStdout() {
  m_EndOfStdout.Unlock();
  m_pOutReader->Wait();
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
}

// Whether the child is gone.
bool CLQThread::TakeExit() {
  const auto end = conversion::TakeEnd(*m_pProcess, m_ExitStatus, ExitCodeFailed);
  if (end == conversion::ChildEnd::Running) return false;
  if (end == conversion::ChildEnd::Ended) m_pTicket->Log(L"Q exited with status %i", m_ExitStatus);
  CAppLog::Instance().Write("[CLQ]: Q exited");
  m_bDone = true;
  return true;
}

void CLQThread::OnAbortSignaled(CBBasePrintingThread& /*supervisor*/) {
  CAppLog::Instance().Write("[CLQ]: Q job canceled");
}

void CLQThread::OnAbortAbandoned(CBBasePrintingThread& /*supervisor*/) {
  CAppLog::Instance().Write("[CLQ]: Abort semaphore abandoned!");
}

void CLQThread::OnProcessSignaled(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CLQThread&>(supervisor);
  if (self.TakeExit() && self.m_ExitStatus == 0) self.CloseStdout();
}

void CLQThread::OnProcessAbandoned(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write("[CLQ]: Wait abandoned on Q!");
  static_cast<CLQThread&>(supervisor).TakeExit();
}

}  // namespace PrintingThread
