#include "rastrel/printing/rip_supervisor.h"

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"

namespace PrintingThread {

namespace {

constexpr rastrel::printing::PipeSizes Pipes{.standardOutput = 16'384, .standardError = 512};

constexpr rastrel::printing::ChildMessages Messages{
    .noPipes = "[Print]: Couldn't create pipes (1).",
    .pipesInheritable = "[Print]: Couldn't set pipes non inheritable.",
    .notStarted = "[Print]: Didn't start the rip",
    .couldNotStart = "[Print]: Couldn't start rip",
    .noReaders = "[Print]: Couldn't start parsers.",
    .waitFailed = L"[Print]: WaitForMultipleObjects failed. Error: %u",
    .canceled = "[Print]: Print job canceled",
    .abortAbandoned = "[Print]: Abort semaphore abandoned!",
    .waitAbandoned = "[Print]: Wait abandoned on rip!",
    .exitCodeFailed = L"[Print]: GetExitCodeProcess failed on rip: %i",
    .exited = "[Print]: Rip exited",
    .terminateFailed = L"[Print]: Couldn't terminate rip: %i",
    .stillAlive = "[Print] Rip handle still alive"};

}  // namespace

CRealPrintingThread::CRealPrintingThread(CJobTicket* ticket, CSemaphore* semaphore,
                                         AbortFlag* abort, CCFM2* document,
                                         const wchar_t* prefixPath)
    : CBasePrintingThread(
          {.ticket = ticket, .semaphore = semaphore, .abort = abort, .document = document},
          CExePaths::Instance().m_RipExe, Messages, L"Rip exited with status %i"),
      m_PrefixPath(prefixPath == nullptr ? L"" : prefixPath) {}

CRealPrintingThread::~CRealPrintingThread() = default;

// The steps of ChildSupervisor. The RIP has no input, so there is no step 3.
bool CRealPrintingThread::Run() {
  if (!MakePipes(Pipes)) return LowOnResources();  // 1
  AddArguments();
  if (!StartProcess()) {  // 2
    m_pTicket->Error(JTE_START_RIP, JTO_SYSTEM);
    return false;
  }
  MakeReaders();
  if (!StartReaders()) {  // 4
    LowOnResources();
    Terminate();
    return false;
  }
  WaitForEnd();     // 5 and 6
  CollectOutput();  // 7
  CAppLog::Instance().Write("6");
  if (HasLostText()) return LowOnResources();
  ReportExitStatus();  // 8
  return m_ExitStatus == 0;
}

void CRealPrintingThread::AddArguments() {
  for (const wchar_t* argument : {L"-M", L"-Q", L"-m128"}) m_pProcess->AddArgument(argument);
  if (m_pTicket->IsRIPInstallJob()) m_pProcess->AddArgument(L"-s");
  if (!m_PrefixPath.empty()) m_pProcess->AddArgument(m_PrefixPath);
  m_pProcess->AddArgument(m_pTicket->m_JobFile.GetFullPath());
  LogCommandLine(L"**************Rip command line**************************",
                 L"********************************************************");
}

void CRealPrintingThread::MakeReaders() {
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_RIP);
  m_pOutReader = std::make_unique<CRipOutReader>(&m_hStdoutRead);
}

// The log counts its way through the wait and the readers' end: "1" to "6", each on its own line.
void CRealPrintingThread::WaitForEnd() {
  CAppLog::Instance().Write("1");
  CWaitTable table;
  AddAbort(table, *m_pSemaphore);
  AddProcess(table);
  AddReaders(table);
  CAppLog::Instance().Write("2");
  WaitForProcess(table, m_pAbort);
  CAppLog::Instance().Write("3");
  Terminate();
}

void CRealPrintingThread::CollectOutput() {
  CAppLog::Instance().Write("4");
  EndStderrReader();
  CAppLog::Instance().Write("5");
  m_pOutReader->Wait();
  if (m_pDocument->m_Text.empty()) {
    m_pDocument->m_Text = std::move(m_pOutReader->m_Text);
  } else {
    m_pDocument->m_Text += m_pOutReader->m_Text;
  }
  EndStdoutReader();
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

}  // namespace PrintingThread
