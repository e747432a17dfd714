#include "rastrel/printing/job_supervisor.h"

#include "rastrel/platform/host/settings.h"

namespace PrintingThread {

CBasePrintingThread::CBasePrintingThread(const Job& job, const std::wstring& executable,
                                         const rastrel::printing::ChildMessages& messages,
                                         const wchar_t* exitedWith)
    : ChildSupervisor(std::make_unique<CCPHelper>(executable), messages),
      m_pSemaphore(job.semaphore),
      m_pAbort(job.abort),
      m_pDocument(job.document),
      m_pTicket(job.ticket),
      m_pExitedWith(exitedWith) {}

CBasePrintingThread::~CBasePrintingThread() = default;

void CBasePrintingThread::LogCommandLine(const wchar_t* ruler, const wchar_t* closing) {
  if (GetIntKorvane(L"RASTREL", L"Keep PS Files", 0, DS_USER, nullptr) == 0) return;
  std::wstring line;
  m_pProcess->GetCommandLine(line);
  for (const wchar_t* text : {L" ", ruler, line.c_str(), closing, L" "})
    m_pTicket->Log(L"%s", text);
}

bool CBasePrintingThread::LowOnResources() {
  m_pTicket->Error(JTE_LOW_RESOURCES, JTO_SYSTEM);
  return false;
}

void CBasePrintingThread::LogExitStatus() { m_pTicket->Log(m_pExitedWith, m_ExitStatus); }

}  // namespace PrintingThread
