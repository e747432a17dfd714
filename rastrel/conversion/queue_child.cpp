#include "rastrel/conversion/queue_child.h"

#include <cerrno>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/process.h"
#include "rastrel/platform/os/wait.h"

namespace rastrel::conversion {

bool WaitOnce(PrintingThread::CBBasePrintingThread& supervisor, PrintingThread::CWaitTable& table,
              const wchar_t* failed) {
  const std::uint32_t result = os::WaitForAny(table.GetHandles());
  if (result == os::WaitFailed) {
    CAppLog::Instance().Printf(failed, errno);
    return false;
  }
  return supervisor.ReactTo(result, table);
}

ChildEnd TakeEnd(PrintingThread::CCPHelper& process, std::int32_t& exitStatus,
                 const wchar_t* failed) {
  if (process.m_hProcess == INVALID_HANDLE_VALUE) return ChildEnd::Running;
  const auto state = os::TakeExitState(process.m_hProcess);
  if (state && state->running) return ChildEnd::Running;
  os::CloseHandle(process.m_hProcess);
  if (!state) {
    CAppLog::Instance().Printf(failed, state.Error().error);
    exitStatus = -1;
    return ChildEnd::Unknown;
  }
  exitStatus = printing::ExitStatusOf(*state);
  return ChildEnd::Ended;
}

void Terminate(PrintingThread::CCPHelper& process, std::int32_t& exitStatus,
               const wchar_t* failed) {
  if (process.m_hProcess == INVALID_HANDLE_VALUE) return;
  const auto state = os::Terminate(process.m_hProcess);
  os::CloseHandle(process.m_hProcess);
  if (!state) {
    CAppLog::Instance().Printf(failed, state.Error().error);
    return;
  }
  exitStatus = 0;
}

}  // namespace rastrel::conversion
