#pragma once

#include <cstdint>

#include "rastrel/printing/wait_table.h"

namespace PrintingThread {

/// The root of all supervisors: one wait on a table of handles. A supervisor is no thread: it is an
/// object whose Run blocks its caller's thread for the life of one child. The rest that supervisors
/// of child processes share is in child_supervisor.h.
class CBBasePrintingThread {
 public:
  /// `waitFailed` is the log text of a wait that failed, with %u for the system's error number. It
  /// must outlive the object; a string literal does.
  explicit CBBasePrintingThread(
      const wchar_t* waitFailed = L"[Print]: WaitForMultipleObjects failed. Error: %u");
  CBBasePrintingThread(const CBBasePrintingThread&) = delete;
  CBBasePrintingThread& operator=(const CBBasePrintingThread&) = delete;
  virtual ~CBBasePrintingThread();

  /// Waits once on the table's handles, without a time limit, and calls the reaction of the entry
  /// that ended the wait. False if the wait itself failed; the application log has the message.
  [[nodiscard]] bool WaitOnce(CWaitTable& table);
  /// The second half of WaitOnce: calls the reaction to a wait's result (os::WaitForAny).
  [[nodiscard]] bool ReactTo(std::uint32_t result, const CWaitTable& table);

 private:
  const wchar_t* m_pWaitFailed;
};

}  // namespace PrintingThread
