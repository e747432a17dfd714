#include "rastrel/printing/rip_supervisor.h"

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/pipe.h"

namespace os = rastrel::os;

namespace PrintingThread {

namespace {

constexpr std::size_t StdoutPipeSize = 16'384;
constexpr std::size_t StderrPipeSize = 512;

constexpr ChildWords Words{L"[Print]: GetExitCodeProcess failed on rip: %i",
                           L"[Print]: Couldn't terminate rip: %i", L"Rip exited with status %i"};

}  // namespace

CRealPrintingThread::CRealPrintingThread(CJobTicket* ticket, CSemaphore* semaphore,
                                         AbortFlag* abort, CCFM2* document,
                                         const wchar_t* prefixPath)
    : CBasePrintingThread(semaphore, abort, document, ticket),
      m_pProcess(std::make_unique<CCPHelper>(CExePaths::Instance().m_RipExe)),
      m_PrefixPath(prefixPath == nullptr ? L"" : prefixPath) {}

CRealPrintingThread::~CRealPrintingThread() {
  // A reader that was started ends with the child's end of its pipe; it must be gone before its
  // pipe is closed.
  if (m_pStderrParser) m_pStderrParser->Wait();
  if (m_pOutReader) m_pOutReader->Wait();
  m_pStderrParser.reset();
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrRead);
  os::CloseHandle(m_hStderrWrite);
  if (m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) {
    CAppLog::Instance().Write("[Print] Rip handle still alive");
    os::CloseHandle(m_pProcess->m_hProcess);
  }
}

bool CRealPrintingThread::Run() {
  if (!MakePipes()) return false;
  if (!StartChild()) {
    CAppLog::Instance().Write("[Print]: Couldn't start rip");
    m_pTicket->Error(JTE_START_RIP, JTO_SYSTEM);
    return false;
  }
  if (!StartReaders()) {
    LowOnResources("[Print]: Couldn't start parsers.");
    Terminate(*m_pProcess, m_ExitStatus, Words);
    return false;
  }
  WaitForEnd();
  CollectOutput();
  CAppLog::Instance().Write("6");
  ReportExitStatus();
  return m_ExitStatus == 0;
}

bool CRealPrintingThread::MakePipes() {
  if (!os::CreatePipe(m_hStdoutRead, m_hStdoutWrite, StdoutPipeSize) ||
      !os::CreatePipe(m_hStderrRead, m_hStderrWrite, StderrPipeSize)) {
    return LowOnResources("[Print]: Couldn't create pipes (1).");
  }
  m_hStderrRead = os::MakeNotInheritable(m_hStderrRead);
  m_hStdoutRead = os::MakeNotInheritable(m_hStdoutRead);
  if (m_hStderrRead == INVALID_HANDLE_VALUE || m_hStdoutRead == INVALID_HANDLE_VALUE)
    return LowOnResources("[Print]: Couldn't set pipes non inheritable.");
  return true;
}

bool CRealPrintingThread::StartChild() {
  m_pProcess->m_hStdOutput = m_hStdoutWrite;
  m_pProcess->m_hStdError = m_hStderrWrite;
  for (const wchar_t* argument : {L"-M", L"-Q", L"-m128"}) m_pProcess->AddArgument(argument);
  if (m_pTicket->IsRIPInstallJob()) m_pProcess->AddArgument(L"-s");
  if (!m_PrefixPath.empty()) m_pProcess->AddArgument(m_PrefixPath);
  m_pProcess->AddArgument(m_pTicket->m_JobFile.GetFullPath());
  if (KeepsFiles()) {
    LogCommandLine(*m_pProcess, L"**************Rip command line**************************",
                   L"********************************************************");
  }
  const bool started = m_pProcess->Start();
  // The readers see the end of a stream only if nobody here holds its write end.
  os::CloseHandle(m_hStdoutWrite);
  os::CloseHandle(m_hStderrWrite);
  if (started && m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return true;
  CAppLog::Instance().Write("[Print]: Didn't start the rip");
  return false;
}

bool CRealPrintingThread::StartReaders() {
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_RIP);
  m_pOutReader = std::make_unique<CRipOutReader>(&m_hStdoutRead);
  return m_pStderrParser->Start() && m_pOutReader->Start();
}

void CRealPrintingThread::WaitForEnd() {
  CAppLog::Instance().Write("1");
  CWaitTable table;
  table.Add(&m_pSemaphore->m_hObject, OnAbortSignaled, OnAbortAbandoned);
  table.Add(&m_pProcess->m_hProcess, OnProcessSignaled, OnProcessAbandoned);
  CAppLog::Instance().Write("2");
  while (!*m_pAbort && !m_bDone)
    if (!WaitOnce(table)) m_bDone = true;
  CAppLog::Instance().Write("3");
  Terminate(*m_pProcess, m_ExitStatus, Words);
}

void CRealPrintingThread::CollectOutput() {
  CAppLog::Instance().Write("4");
  m_pStderrParser->Wait();
  m_pStderrParser.reset();
  os::CloseHandle(m_hStderrRead);
  CAppLog::Instance().Write("5");
  m_pOutReader->Wait();
  if (m_pDocument->m_Text.empty()) {
    m_pDocument->m_Text = std::move(m_pOutReader->m_Text);
  } else {
    m_pDocument->m_Text += m_pOutReader->m_Text;
  }
  m_pOutReader.reset();
  os::CloseHandle(m_hStdoutRead);
}

void CRealPrintingThread::ReportExitStatus() {
  // A child that installs ends with 1 when all went well.
  if (m_ExitStatus == 1 && m_pTicket->IsRIPInstallJob()) m_ExitStatus = 0;
  switch (m_ExitStatus) {
    case 0: break;
    case 1: m_pTicket->Error(JTE_RIP_STATUS_1, JTO_RIP); break;
    case 2: m_pTicket->Error(JTE_RIP_STATUS_2, JTO_RIP); break;
    case 3: m_pTicket->Error(JTE_RIP_STATUS_3, JTO_RIP); break;
    default: m_pTicket->Error(JTE_RIP_EXIT, JTO_RIP); break;
  }
}

void CRealPrintingThread::OnProcessSignaled(CBBasePrintingThread& supervisor) {
  auto& self = static_cast<CRealPrintingThread&>(supervisor);
  self.CheckExit(*self.m_pProcess, self.m_ExitStatus, Words);
  if (self.m_pProcess->m_hProcess != INVALID_HANDLE_VALUE) return;
  CAppLog::Instance().Write("[Print]: Rip exited");
  self.m_bDone = true;
}

void CRealPrintingThread::OnProcessAbandoned(CBBasePrintingThread& supervisor) {
  CAppLog::Instance().Write("[Print]: Wait abandoned on rip!");
  OnProcessSignaled(supervisor);
}

}  // namespace PrintingThread
