#include "rastrel/printing/output_supervisor.h"

#include <cerrno>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"
#include "rastrel/platform/os/text.h"

namespace os = rastrel::os;

namespace PrintingThread {

namespace {

constexpr std::size_t StdoutPipeSize = 16'384;
constexpr std::size_t StderrPipeSize = 512;

constexpr ChildWords Words{L"[Print]: GetExitCodeProcess failed on odalis: %i",
                           L"[Print]: Couldn't terminate odalis: %i",
                           L"Odalis exited with status %i"};

}  // namespace

CRealReprintingThread::CRealReprintingThread(CSemaphore* semaphore, AbortFlag* abort,
                                             CCFM2* document, CJobTicket* ticket)
    : CBasePrintingThread(semaphore, abort, document, ticket),
      m_pProcess(std::make_unique<CCPHelper>(CExePaths::Instance().m_OdalisExe)) {}

CRealReprintingThread::~CRealReprintingThread() {
  m_pOutput.reset();
  if (m_pStderrParser) m_pStderrParser->Wait();
  m_pStderrParser.reset();
  for (HANDLE* handle : {&m_hStdinRead, &m_hStdinWrite, &m_hStdoutRead, &m_hStdoutWrite,
                         &m_hStderrRead, &m_hStderrWrite}) {
    os::CloseHandle(*handle);
  }
  if (m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) {
    CAppLog::Instance().Write("[Print] Odalis handle still alive");
    os::CloseHandle(m_pProcess->m_hProcess);
  }
}

bool CRealReprintingThread::Run() {
  if (!MakePipes()) return false;
  if (!StartChild()) {
    CAppLog::Instance().Write("[Print]: Couldn't start odalis");
    m_pTicket->Error(JTE_START_ODALIS, JTO_SYSTEM);
    return false;
  }
  WriteInput();
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_ODALIS);
  if (!m_pStderrParser->Start()) {
    LowOnResources("[Print]: Couldn't create pipe parser.");
    Terminate(*m_pProcess, m_ExitStatus, Words);
    return false;
  }
  WaitForEnd();
  if (*m_pAbort && !m_pOutput->m_bStopped) m_pOutput->m_bStopped = true;
  Terminate(*m_pProcess, m_ExitStatus, Words);
  CAppLog::Instance().Write("[Print]: Waiting for output thread");
  m_pOutput.reset();
  m_pStderrParser->Wait();
  m_pStderrParser.reset();
  os::CloseHandle(m_hStderrRead);
  ReportExitStatus();
  return m_ExitStatus == 0;
}

bool CRealReprintingThread::MakePipes() {
  if (!os::CreatePipe(m_hStdoutRead, m_hStdoutWrite, StdoutPipeSize))
    return LowOnResources("[Print]: Couldn't create pipes (2).");
  m_pOutput = std::make_unique<Output>(m_hStdoutRead);
  m_hStdoutRead = INVALID_HANDLE_VALUE;
  // The input takes the whole text, so that the one write can't block on an engine that reads late.
  if (!os::CreateInput(m_hStdinRead, m_hStdinWrite, os::Utf8FromWide(m_pDocument->m_Text)) ||
      !os::CreatePipe(m_hStderrRead, m_hStderrWrite, StderrPipeSize)) {
    return LowOnResources("[Print]: Couldn't create pipes (3).");
  }
  // A failure shows where the handle is used.
  m_hStderrRead = os::MakeNotInheritable(m_hStderrRead);
  m_hStdinWrite = os::MakeNotInheritable(m_hStdinWrite);
  return true;
}

bool CRealReprintingThread::StartChild() {
  m_pProcess->m_hStdInput = m_hStdinRead;
  m_pProcess->m_hStdOutput = m_hStdoutWrite;
  m_pProcess->m_hStdError = m_hStderrWrite;
  for (const wchar_t* argument : {L"-M", L"-Q", L"-k400", L"-N", L"-"})
    m_pProcess->AddArgument(argument);
  if (m_pTicket->GetPlanar()) m_pProcess->AddArgument(L"-tp");
  if (KeepsFiles()) {
    LogCommandLine(*m_pProcess, L"***********Odalis command line**************************",
                   L"******************************************************");
  }
  const bool started = m_pProcess->Start();
  os::CloseHandle(m_hStdinRead);
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrWrite);
  if (started && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write("[Print]: Didn't start odalis");
  return false;
}

void CRealReprintingThread::WriteInput() {
  if (!os::WriteInput(m_hStdinWrite, os::Utf8FromWide(m_pDocument->m_Text))) {
    // No error of its own: from here the job counts as aborted.
    CAppLog::Instance().Printf(L"[Print] Couldn't write CFM2 to Odalis, errno: %i", errno);
    *m_pAbort = true;
  }
  os::CloseHandle(m_hStdinWrite);  // the engine sees the end of its input
}

void CRealReprintingThread::WaitForEnd() {
  CWaitTable table;
  table.Add(&m_pSemaphore->m_hObject, OnAbortSignaled, OnAbortAbandoned);
  table.Add(&m_pProcess->m_hProcess, OnProcessSignaled, OnProcessAbandoned);
  while (!*m_pAbort && !m_bDone)
    if (!WaitOnce(table)) m_bDone = true;
}

void CRealReprintingThread::ReportExitStatus() {
  switch (m_ExitStatus) {
    case 0: break;
    case 1: m_pTicket->Error(JTE_ODALIS_STATUS_1, JTO_ODALIS); break;
    case 2: m_pTicket->Error(JTE_ODALIS_STATUS_2, JTO_ODALIS); break;
    default: m_pTicket->Error(JTE_ODALIS_EXIT, JTO_ODALIS); break;
  }
}

void CRealReprintingThread::OnProcessSignaled(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CRealReprintingThread&>(supervisor);
  self.CheckExit(*self.m_pProcess, self.m_ExitStatus, Words);
  if (self.m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return;
  CAppLog::Instance().Write("[Print]: Odalis exited");
  self.m_bDone = true;
}

void CRealReprintingThread::OnProcessAbandoned(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write("[Print]: Wait abandoned on odalis!");
  OnProcessSignaled(supervisor);
}

}  // namespace PrintingThread
