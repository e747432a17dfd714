#include "rastrel/conversion/clq_ticket.h"

#include <array>
#include <chrono>
#include <cstdarg>
#include <cwchar>

#include "rastrel/conversion/queue_supervisor.h"
#include "rastrel/job/app_log.h"
#include "rastrel/job/printf_text.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/thread.h"
#include "rastrel/platform/os/wait.h"
#include "rastrel/printing/held_semaphore.h"

namespace os = rastrel::os;

namespace {

// The maximum number of characters that a log text has beyond its format's length.
constexpr std::size_t LogTextRoom = 1024 - 3;

bool IsWhole(const CSemaphore& semaphore) { return semaphore.m_hObject != INVALID_HANDLE_VALUE; }

}  // namespace

CLQTicket::CLQTicket(const std::wstring& executable) : m_ExePath(executable) {}

void CLQTicket::Warning(const wchar_t*, JT_ORIGINATOR) {}

void CLQTicket::Error(const wchar_t*, JT_ORIGINATOR) {}

void CLQTicket::Error(JT_ERROR, JT_ORIGINATOR) {}

void CLQTicket::Info(JT_INFO, JT_ORIGINATOR) {}

void CLQTicket::Progress(unsigned short, JT_ORIGINATOR) {}

void CLQTicket::Log(const wchar_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::wstring text = rastrel::job::FormatVariableList(format, arguments);
  va_end(arguments);
  if (const std::size_t room = std::wcslen(format) + LogTextRoom; text.size() > room)
    text.resize(room);
  CAppLog::Instance().Write((text + L"\r\n").c_str());
}

CLQTicket::~CLQTicket() { CLQTicket::Join(); }

bool CLQTicket::Start(const wchar_t* file) {
  if (m_hThread != nullptr || file == nullptr) return false;
  if (!os::Exists(m_ExePath) || !os::Exists(file)) return false;
  if (!TakeLock()) return false;
  m_bEnded = false;
  m_bAbort = false;
  m_hThread = os::Thread::Start([this, path = std::wstring(file)] { Work(path); });
  if (m_hThread == nullptr) FreeLock();
  return m_hThread != nullptr;
}

bool CLQTicket::TakeLock() {
  if (!rastrel::printing::MakeHeldSemaphore(m_pSemaphore, m_pLock)) return false;
  m_pGiveUp = std::make_unique<CSemaphore>(0, 1);
  m_pEnd = std::make_unique<CSemaphore>(0, 1);
  if (IsWhole(*m_pGiveUp) && IsWhole(*m_pEnd)) return true;
  FreeLock();
  rastrel::printing::LogNoSemaphore();
  return false;
}

void CLQTicket::FreeLock() {
  m_pLock.reset();  // gives its count back, so the semaphore goes after it
  m_pGiveUp.reset();
  m_pEnd.reset();
  m_pSemaphore.reset();
}

void CLQTicket::Work(const std::wstring& file) {
  {
    PrintingThread::CLQThread supervisor({.ticket = this,
                                          .semaphore = m_pSemaphore.get(),
                                          .abort = &m_bAbort,
                                          .giveUp = m_pGiveUp->m_hObject},
                                         std::make_unique<PrintingThread::CCPHelper>(m_ExePath),
                                         file);
    static_cast<void>(supervisor.Run());  // a failure was reported; nobody asks again
  }
  m_bEnded = true;
  m_pEnd->Unlock();
  OnEnd();
}

void CLQTicket::OnEnd() {}

void CLQTicket::Abort() {
  if (m_hThread == nullptr) return;
  m_bAbort = true;
  m_pLock->Unlock();
  const std::array<HANDLE, 1> end{m_pEnd->m_hObject};
  const std::chrono::milliseconds timeout(PrintingThread::CLQThread::s_GuardianTimeout);
  if (os::WaitReadable(end, os::Deadline::After(timeout)) != os::WaitSignaledBase)
    m_pGiveUp->Unlock();
  Join();
}

void CLQTicket::Join() {
  if (m_hThread == nullptr) return;
  m_hThread->Join();
  m_hThread.reset();
  FreeLock();
}
