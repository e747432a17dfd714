#include "rastrel/printing/supervisor.h"

#include <cerrno>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;

namespace PrintingThread {

CBBasePrintingThread::CBBasePrintingThread(const wchar_t* waitFailed) : m_pWaitFailed(waitFailed) {}

CBBasePrintingThread::~CBBasePrintingThread() = default;

bool CBBasePrintingThread::WaitOnce(CWaitTable& table) {
  return ReactTo(os::WaitForAny(table.GetHandles()), table);
}

bool CBBasePrintingThread::ReactTo(std::uint32_t result, const CWaitTable& table) {
  if (result == os::WaitFailed) {
    CAppLog::Instance().Printf(m_pWaitFailed, errno);
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

}  // namespace PrintingThread
