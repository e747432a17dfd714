#include "rastrel/printing/supervisor.h"

#include <cerrno>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;

namespace rastrel::printing {

// Any status above the known ones means an abnormal end to whoever looks at it.
std::int32_t ExitStatusOf(const os::ExitState& state) {
  constexpr int SignalBase = 128;
  return state.byItself ? state.status : SignalBase + state.status;
}

}  // namespace rastrel::printing

namespace PrintingThread {

CBBasePrintingThread::~CBBasePrintingThread() = default;

bool CBBasePrintingThread::WaitOnce(CWaitTable& table) {
  return ReactTo(os::WaitForAny(table.GetHandles()), table);
}

bool CBBasePrintingThread::ReactTo(std::uint32_t result, const CWaitTable& table) {
  if (result == os::WaitFailed) {
    CAppLog::Instance().Printf(L"[Print]: WaitForMultipleObjects failed. Error: %u", errno);
    return false;
  }
  if (table.IsEmpty() || result >= os::WaitTimeout) return true;
  if (result >= os::WaitAbandonedBase) {
    if (const auto* entry = table.At(result - os::WaitAbandonedBase)) {
      entry->m_pfnAbandoned(*this);
    } else {
      CAppLog::Instance().Write("[Print]: Unexpected return from WaitForMultipleObjects (abandon)");
    }
    return true;
  }
  if (const auto* entry = table.At(result)) {
    entry->m_pfnSignaled(*this);
  } else {
    CAppLog::Instance().Write("[Print]: Unexpected return from WaitForMultipleObjects (signal)");
  }
  return true;
}

CBasePrintingThread::CBasePrintingThread(CSemaphore* semaphore, AbortFlag* abort, CCFM2* document,
                                         CJobTicket* ticket)
    : m_pSemaphore(semaphore), m_pAbort(abort), m_pDocument(document), m_pTicket(ticket) {}

CBasePrintingThread::~CBasePrintingThread() = default;

bool CBasePrintingThread::KeepsFiles() {
  return GetIntKorvane(L"RASTREL", L"Keep PS Files", 0, DS_USER, nullptr) != 0;
}

void CBasePrintingThread::LogCommandLine(const CCPHelper& process, const wchar_t* ruler,
                                         const wchar_t* closing) {
  std::wstring line;
  process.GetCommandLine(line);
  for (const wchar_t* text : {L" ", ruler, line.c_str(), closing, L" "})
    m_pTicket->Log(L"%s", text);
}

void CBasePrintingThread::CheckExit(CCPHelper& process, std::int32_t& exitStatus,
                                    const ChildWords& words) {
  if (process.m_hProcess == INVALID_HANDLE_VALUE) return;
  const auto state = os::TakeExitState(process.m_hProcess);
  if (state && state->running) return;
  os::CloseHandle(process.m_hProcess);
  if (!state) {
    CAppLog::Instance().Printf(words.exitCodeFailed, state.Error().error);
    exitStatus = -1;
    return;
  }
  exitStatus = rastrel::printing::ExitStatusOf(*state);
  m_pTicket->Log(words.exitedWith, exitStatus);
}

void CBasePrintingThread::Terminate(CCPHelper& process, std::int32_t& exitStatus,
                                    const ChildWords& words) {
  if (process.m_hProcess == INVALID_HANDLE_VALUE) return;
  const auto state = os::Terminate(process.m_hProcess);
  os::CloseHandle(process.m_hProcess);
  if (!state) {
    CAppLog::Instance().Printf(words.terminateFailed, state.Error().error);
    return;
  }
  exitStatus = 0;
}

void CBasePrintingThread::OnAbortSignaled(CBBasePrintingThread& /*supervisor*/) {
  CAppLog::Instance().Write("[Print]: Print job canceled");
}

void CBasePrintingThread::OnAbortAbandoned(CBBasePrintingThread& /*supervisor*/) {
  CAppLog::Instance().Write("[Print]: Abort semaphore abandoned!");
}

bool CBasePrintingThread::LowOnResources(const char* words) {
  CAppLog::Instance().Write(words);
  m_pTicket->Error(JTE_LOW_RESOURCES, JTO_SYSTEM);
  return false;
}

}  // namespace PrintingThread
