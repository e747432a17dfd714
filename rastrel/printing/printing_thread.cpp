#include "rastrel/printing/printing_thread.h"

#include <exception>

#include "rastrel/job/app_log.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/job/job_ticket.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/platform/os/trusted_file.h"
#include "rastrel/printing/held_semaphore.h"

namespace os = rastrel::os;

namespace PrintingThread {

namespace {

// The job would fail at the start of that program all the same; so nothing has been rendered by
// then.
bool MayRun(const std::wstring& program, CJobTicket& ticket, JT_ERROR error) {
  const auto trusted = os::CheckTrusted(os::ToNative(program), os::DataRoot());
  if (trusted) return true;
  const std::wstring why = os::WideFromUtf8(Describe(trusted.Error()));
  CAppLog::Instance().Printf(L"[Print]: A program is not run: %s", why);
  ticket.Log(L"A program is not run: %s", why.c_str());
  ticket.Error(error, JTO_SYSTEM);
  return false;
}

}  // namespace

CPrintingThread::CPrintingThread(CJobTicket* ticket) : m_pTicket(ticket) {}

CPrintingThread::~CPrintingThread() { Join(); }

bool CPrintingThread::Start() {
  // The lock is held for the length of the job: the semaphore is signalled by an abort alone.
  if (!rastrel::printing::MakeHeldSemaphore(m_pSemaphore, m_pLock)) return false;
  if (m_pTicket == nullptr) {
    CAppLog::Instance().Write("[Print]: Invalid m_pTicket");
    return false;
  }
  if (!os::Exists(CExePaths::Instance().m_RipExe)) {
    CAppLog::Instance().Write("[Print]: Rip executable not avaliable.");
    m_pTicket->Error(JTE_RIP_MISSING, JTO_SYSTEM);
    return false;
  }
  if (!os::Exists(CExePaths::Instance().m_OdalisExe)) {
    CAppLog::Instance().Write("[Print]: Odalis executable not avaliable.");
    m_pTicket->Error(JTE_ODALIS_MISSING, JTO_SYSTEM);
    return false;
  }
  if (!MayRun(CExePaths::Instance().m_RipExe, *m_pTicket, JTE_RIP_MISSING) ||
      !MayRun(CExePaths::Instance().m_OdalisExe, *m_pTicket, JTE_ODALIS_MISSING))
    return false;
  m_hThread = os::Thread::Start([this] {
    ThreadMain();
    m_bEnded = true;
  });
  return m_hThread != nullptr;
}

void CPrintingThread::Join() {
  if (m_hThread == nullptr) return;
  m_hThread->Join();
  m_hThread.reset();
  const std::lock_guard<std::mutex> guard(m_AbortMutex);
  m_pLock->Unlock();
  m_pLock.reset();
  m_pSemaphore.reset();
}

void CPrintingThread::Abort() {
  // In this order: the supervisors read the flag only when their wait ends.
  m_bAbort = true;
  const std::lock_guard<std::mutex> guard(m_AbortMutex);
  if (m_pLock) m_pLock->Unlock();
}

void CPrintingThread::ThreadMain() {
  CAppLog::Instance().Write("[Print]: Printing thread started");
  m_pTicket->Info(JTI_PROCESSING_STARTED, JTO_SYSTEM);
  try {
    // The ticket has the failure; nobody reads the thread's own result.
    static_cast<void>(Run());
  } catch (const std::exception& failure) {
    // The thread ends with no report to the ticket: the host finds the job still active after its
    // end. The document and all handles are cleaned up.
    CAppLog::Instance().Write("[Print]: Printing thread ended by an exception: ");
    CAppLog::Instance().Write(failure.what());
    return;
  }
  if (m_bAbort) {
    m_pTicket->Log(L"Job aborted");
    CAppLog::Instance().Write("[Print]: Printing thread aborted");
    m_pTicket->Info(JTI_PRINTING_ABORTED, JTO_SYSTEM);
  } else {
    m_pTicket->Log(L"Printing done");
    CAppLog::Instance().Write("[Print]: Printing thread done");
    m_pTicket->Info(JTI_PROCESSING_COMPLETED, JTO_SYSTEM);
  }
}

}  // namespace PrintingThread
