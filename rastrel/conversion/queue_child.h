#pragma once

#include <cstdint>

#include "rastrel/cfm/cp_helper.h"
#include "rastrel/printing/supervisor.h"
#include "rastrel/printing/wait_table.h"

/// What the two supervisors of the queue program do alike. They differ from those of a print job in
/// where they report: to the application log, each in words of its own, given here.
namespace rastrel::conversion {

/// One wait without a limit on the table's handles, and the reaction of the entry that ended it.
/// False if the wait itself failed; `failed` is logged then with the system's error number.
[[nodiscard]] bool WaitOnce(PrintingThread::CBBasePrintingThread& supervisor,
                            PrintingThread::CWaitTable& table, const wchar_t* failed);

/// What TakeEnd found.
enum class ChildEnd {
  Running,  ///< it runs, or there is none
  Ended,    ///< it has ended, and its status was taken
  Unknown,  ///< the system could not tell
};

/// Looks whether the child has ended. If so, or if that can't be told, its handle is closed and
/// `exitStatus` is its status, or -1; `failed` is logged for the latter, with the system's error
/// number.
[[nodiscard]] ChildEnd TakeEnd(PrintingThread::CCPHelper& process, std::int32_t& exitStatus,
                               const wchar_t* failed);

/// Ends the child if it still runs, and closes its handle; that counts as status 0. If it could not
/// be ended, `failed` is logged with the system's error number and the status stays as it was.
void Terminate(PrintingThread::CCPHelper& process, std::int32_t& exitStatus, const wchar_t* failed);

}  // namespace rastrel::conversion
