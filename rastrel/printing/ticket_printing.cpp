// The members of the ticket that print. They are here since the ticket's own folder knows nothing
// of the printing thread.

#include <new>

#include "rastrel/job/job_ticket.h"
#include "rastrel/printing/printing_thread.h"

bool CJobTicket::PrintJob() {
  if (m_Status != JS_IDLE) return false;
  if (m_pPrintThread != nullptr) {
    // A former print was never ended.
    m_Status = JS_HOLDING;
    return false;
  }
  Log(L"START: Print Job Thread");
  m_JobFile.GetFullPath();  // built before there is a second thread to build it
  m_pPrintThread = new (std::nothrow) PrintingThread::CPrintingThread(this);
  // Active before the thread runs: one that fails at once must not have its state written over.
  m_Status = JS_ACTIVE;
  if (m_pPrintThread != nullptr && m_pPrintThread->Start()) return true;
  if (m_Status == JS_ACTIVE) m_Status = JS_IDLE;
  delete m_pPrintThread;
  m_pPrintThread = nullptr;
  return false;
}

bool CJobTicket::EndPrint() {
  if (m_pPrintThread != nullptr) {
    m_pPrintThread->Join();
    delete m_pPrintThread;
    m_pPrintThread = nullptr;
  }
  return true;
}
