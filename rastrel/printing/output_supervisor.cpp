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

constexpr rastrel::printing::PipeSizes Pipes{.standardOutput = 16'384, .standardError = 512};

// The pipes' messages are logged by MakeThreePipes itself.
constexpr rastrel::printing::ChildMessages Messages{
    .noPipes = "[Print]: Couldn't create pipes (3).",
    .pipesInheritable = nullptr,
    .notStarted = "[Print]: Didn't start odalis",
    .couldNotStart = "[Print]: Couldn't start odalis",
    .noReaders = "[Print]: Couldn't create pipe parser.",
    .waitFailed = L"[Print]: WaitForMultipleObjects failed. Error: %u",
    .canceled = "[Print]: Print job canceled",
    .abortAbandoned = "[Print]: Abort semaphore abandoned!",
    .waitAbandoned = "[Print]: Wait abandoned on odalis!",
    .exitCodeFailed = L"[Print]: GetExitCodeProcess failed on odalis: %i",
    .exited = "[Print]: Odalis exited",
    .terminateFailed = L"[Print]: Couldn't terminate odalis: %i",
    .stillAlive = "[Print] Odalis handle still alive"};

}  // namespace

CRealReprintingThread::CRealReprintingThread(CSemaphore* semaphore, AbortFlag* abort,
                                             CCFM2* document, CJobTicket* ticket)
    : CBasePrintingThread(
          {.ticket = ticket, .semaphore = semaphore, .abort = abort, .document = document},
          CExePaths::Instance().m_OdalisExe, Messages, L"Odalis exited with status %i") {}

CRealReprintingThread::~CRealReprintingThread() {
  os::CloseHandle(m_hStdinRead);
  os::CloseHandle(m_hStdinWrite);
}

// The steps of ChildSupervisor.
bool CRealReprintingThread::Run() {
  if (!MakeThreePipes()) return LowOnResources();  // 1
  AddArguments();
  if (!StartWithInput()) {  // 2
    m_pTicket->Error(JTE_START_ODALIS, JTO_SYSTEM);
    return false;
  }
  WriteInput();  // 3
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_ODALIS);
  if (!StartReaders()) {  // 4
    LowOnResources();
    Terminate();
    return false;
  }
  WaitForEnd();  // 5
  if (*m_pAbort && !m_pOutput->m_bStopped) m_pOutput->m_bStopped = true;
  Terminate();  // 6
  CAppLog::Instance().Write("[Print]: Waiting for output thread");
  m_pOutput.reset();
  EndStderrReader();  // 7
  if (HasLostText()) return LowOnResources();
  ReportExitStatus();  // 8
  return m_ExitStatus == 0;
}

bool CRealReprintingThread::MakeThreePipes() {
  if (!os::CreatePipe(m_hStdoutRead, m_hStdoutWrite, Pipes.standardOutput)) {
    CAppLog::Instance().Write("[Print]: Couldn't create pipes (2).");
    return false;
  }
  m_pOutput = std::make_unique<Output>(m_hStdoutRead);
  m_hStdoutRead = INVALID_HANDLE_VALUE;
  // The input takes the whole text, so that the one write can't block on an engine that reads late.
  if (!os::CreateInput(m_hStdinRead, m_hStdinWrite, os::Utf8FromWide(m_pDocument->m_Text)) ||
      !os::CreatePipe(m_hStderrRead, m_hStderrWrite, Pipes.standardError)) {
    CAppLog::Instance().Write(Messages.noPipes);
    return false;
  }
  // A failure shows where the handle is used.
  m_hStderrRead = os::MakeNotInheritable(m_hStderrRead).ValueOr(INVALID_HANDLE_VALUE);
  m_hStdinWrite = os::MakeNotInheritable(m_hStdinWrite).ValueOr(INVALID_HANDLE_VALUE);
  return true;
}

void CRealReprintingThread::AddArguments() {
  for (const wchar_t* argument : {L"-M", L"-Q", L"-k400", L"-N", L"-"})
    m_pProcess->AddArgument(argument);
  if (m_pTicket->GetPlanar()) m_pProcess->AddArgument(L"-tp");
  LogCommandLine(L"***********Odalis command line**************************",
                 L"******************************************************");
}

// The pages know their job by the prefix's title, which is its file's path. Its name is the
// ticket's; without one a variable of the host's own must not count.
bool CRealReprintingThread::StartWithInput() {
  m_pProcess->SetVariable("RASTREL_JOB", os::Utf8FromWide(m_pTicket->m_JobName));
  // All types of pages say "reprint". The files of those that go with the job are the engine's to
  // give away.
  const CJobData& settings = m_pTicket->m_JobData;
  const bool areKept =
      m_pTicket->GetCFMFileExists() || (settings.SpoolRequested && settings.SpoolAllowed);
  m_pProcess->SetVariable("RASTREL_PAGES", areKept ? "kept" : "removed");
  m_pProcess->m_hStdInput = m_hStdinRead;
  const bool started = StartProcess();
  os::CloseHandle(m_hStdinRead);
  return started;
}

void CRealReprintingThread::WriteInput() {
  const auto written = os::WriteInput(m_hStdinWrite, os::Utf8FromWide(m_pDocument->m_Text));
  if (!written) {
    // No error of its own: from here the job counts as aborted.
    CAppLog::Instance().Printf(L"[Print] Couldn't write CFM2 to Odalis, errno: %i",
                               written.Error().error);
    *m_pAbort = true;
  }
  os::CloseHandle(m_hStdinWrite);  // the engine sees the end of its input
}

void CRealReprintingThread::WaitForEnd() {
  CWaitTable table;
  AddAbort(table, *m_pSemaphore);
  AddProcess(table);
  AddReaders(table);
  WaitForProcess(table, m_pAbort);
}

void CRealReprintingThread::ReportExitStatus() {
  switch (m_ExitStatus) {
    case 0: break;
    case 1: m_pTicket->Error(JTE_ODALIS_STATUS_1, JTO_ODALIS); break;
    case 2: m_pTicket->Error(JTE_ODALIS_STATUS_2, JTO_ODALIS); break;
    default: m_pTicket->Error(JTE_ODALIS_EXIT, JTO_ODALIS); break;
  }
}

}  // namespace PrintingThread
