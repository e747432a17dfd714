#pragma once

#include <span>
#include <vector>

#include "rastrel/platform/os/handle.h"

namespace PrintingThread {

class CBBasePrintingThread;

/// The handles that a supervisor waits for, in the order of its entries. An entry holds the address
/// of the variable with the handle, so it is removed by itself once its owner has closed the handle
/// and set the variable to INVALID_HANDLE_VALUE.
class CWaitTable {
 public:
  using Reaction = void (*)(CBBasePrintingThread& supervisor);
  struct Entry {
    HANDLE* m_pHandle;
    Reaction m_pfnSignaled;   ///< called when the handle is signalled
    Reaction m_pfnAbandoned;  ///< called when the handle is abandoned
  };

  /// Appends an entry. Ignored beyond Limit entries.
  void Add(HANDLE* handle, Reaction signaled, Reaction abandoned);
  /// The handles, after the entries whose handle is closed were removed. Valid until the next call.
  [[nodiscard]] std::span<const HANDLE> GetHandles();
  /// The entry of the handle at that index of the last GetHandles, or null.
  [[nodiscard]] const Entry* At(std::size_t index) const;

  [[nodiscard]] bool IsEmpty() const { return m_Entries.empty(); }

  /// The maximum number of handles in one wait.
  static constexpr std::size_t Limit = 64;

 private:
  std::vector<Entry> m_Entries;
  std::vector<HANDLE> m_Handles;
};

}  // namespace PrintingThread
