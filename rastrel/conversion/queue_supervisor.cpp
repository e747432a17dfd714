#include "rastrel/conversion/queue_supervisor.h"

#include <new>

#include "rastrel/conversion/clq_ticket.h"

namespace PrintingThread {

namespace {

constexpr rastrel::printing::PipeSizes Pipes{.standardOutput = 16'384, .standardError = 512};

constexpr rastrel::printing::ChildMessages Messages{
    .noPipes = "[CLQ]: Couldn't create pipes (1).",
    .pipesInheritable = "[CLQ]: Couldn't set pipes non inheritable.",
    .notStarted = "[CLQ]: Didn't start the Q",
    .couldNotStart = "[CLQ]: Couldn't start rip",
    .noReaders = "[CLQ]: Couldn't start parsers.",
    .waitFailed = L"[CLQ]: WaitForMultipleObjects failed. Error: %u",
    .canceled = "[CLQ]: Q job canceled",
    .abortAbandoned = "[CLQ]: Abort semaphore abandoned!",
    .waitAbandoned = "[CLQ]: Wait abandoned on Q!",
    .exitCodeFailed = L"[CLQ]: GetExitCodeProcess failed on Q: %i",
    .exited = "[CLQ]: Q exited",
    .terminateFailed = L"[CLQ]: Couldn't terminate Q: %i",
    .stillAlive = "[CLQ] Rip handle still alive"};

}  // namespace

int CLQThread::s_GuardianTimeout = GuardianTimeout;

CLQThread::CLQThread(const Job& job, std::unique_ptr<CCPHelper> process, std::wstring file)
    : ChildSupervisor(std::move(process), Messages),
      m_pTicket(job.ticket),
      m_pSemaphore(job.semaphore),
      m_pAbort(job.abort),
      m_File(std::move(file)),
      m_hGiveUp(job.giveUp) {}

CLQThread::~CLQThread() {
  // The readers wait for these semaphores, so they end before them.
  m_EndOfStderr.Unlock();
  m_EndOfStdout.Unlock();
  JoinReaders();
}

bool CLQThread::Run() {
  try {
    return RunProgram();
  } catch (const std::bad_alloc&) {  // this thread has nobody else to catch it
    Terminate();
    return LowOnResources();
  }
}

// The steps of ChildSupervisor. The program has no input and its status no meaning, so there are no
// steps 3 and 8.
bool CLQThread::RunProgram() {
  if (!MakePipes(Pipes)) return LowOnResources();  // 1
  AddArguments();
  if (!StartProcess()) return LowOnResources();  // 2
  MakeReaders();
  if (!StartReaders()) {  // 4
    Terminate();
    return LowOnResources();
  }
  CWaitTable table;
  AddAbort(table, *m_pSemaphore);
  AddProcess(table);
  AddReaders(table);
  WaitForProcess(table, m_pAbort);  // 5
  Terminate();                      // 6
  EndReaders();                     // 7
  return !HasLostText() || LowOnResources();
}

// The page measuring passes the first two the other way round.
void CLQThread::AddArguments() {
  for (const wchar_t* argument : {L"-ps", L"-q", m_File.c_str()}) m_pProcess->AddArgument(argument);
}

void CLQThread::MakeReaders() {
  m_pStderrParser = std::make_unique<CStderrParser>(m_pTicket, &m_hStderrRead, JTO_CLQ);
  m_pOutReader = std::make_unique<CDroppingReader>(&m_hStdoutRead);
  for (const HANDLE end : {m_hGiveUp, m_EndOfStderr.m_hObject}) m_pStderrParser->EndWith(end);
  for (const HANDLE end : {m_hGiveUp, m_EndOfStdout.m_hObject}) m_pOutReader->EndWith(end);
}

bool CLQThread::LowOnResources() {
  m_pTicket->Error(JTE_LOW_RESOURCES, JTO_CLQ);
  return false;
}

// Ends the stdout reader while others may hold the pipe's other end still.
void CLQThread::CloseStdout() {
  m_EndOfStdout.Unlock();
  EndStdoutReader();
}

// Nobody reads the output of a program that ended well, so its end is not waited for.
void CLQThread::OnProcessEnded() {
  if (TakeExit() && m_ExitStatus == 0) CloseStdout();
}

void CLQThread::LogExitStatus() { m_pTicket->Log(L"Q exited with status %i", m_ExitStatus); }

}  // namespace PrintingThread
