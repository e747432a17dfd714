#pragma once

#include "rastrel/export.h"
#include "rastrel/platform/os/handle.h"

/// A counting semaphore that a wait for several things can include: its handle is a descriptor that
/// is readable while the count is above 0. Any thread may use it.
class RASTREL_API CSemaphore {
 public:
  /// Count and maximum as given. If the system has no handle to give, m_hObject is invalid.
  explicit CSemaphore(int initialCount = 1, int maximumCount = 1);
  ~CSemaphore();
  CSemaphore(const CSemaphore&) = delete;
  CSemaphore& operator=(const CSemaphore&) = delete;

  /// Waits for a count without a time limit and takes it. False if the wait failed.
  [[nodiscard]] bool Lock();
  /// Gives one back. False, and nothing changed, at the maximum. Never blocks, and never lost: a
  /// wait that begins later finds it.
  bool Unlock();

  HANDLE m_hObject;  ///< owned; INVALID_HANDLE_VALUE if it could not be made

 private:
  int m_Maximum;
};

/// Holds one count of a semaphore. Lock and Unlock may be called from different threads, one after
/// the other.
class RASTREL_API CSingleLock {
 public:
  /// The semaphore is not owned. Takes the count at once if `initialLock` is set.
  explicit CSingleLock(CSemaphore* semaphore, bool initialLock = false);
  /// Gives the count back if it is held.
  ~CSingleLock();
  CSingleLock(const CSingleLock&) = delete;
  CSingleLock& operator=(const CSingleLock&) = delete;

  /// Waits for a count without a time limit. False if that failed.
  [[nodiscard]] bool Lock();
  /// Gives the count back. False if it is not held. Of two threads that unlock at once, one does.
  bool Unlock();
  [[nodiscard]] bool IsLocked() const;

 private:
  CSemaphore* m_pObject;
  mutable int m_Held = 0;  // accessed atomically
};
