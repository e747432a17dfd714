#pragma once

#include "rastrel/export.h"
#include "rastrel/platform/os/handle.h"

/// A counting semaphore that a wait on several handles can include: its handle is a descriptor that
/// is readable while the count is above 0. Any thread may use it, several at once.
class RASTREL_API CSemaphore {
 public:
  /// Starts with that count, or 0 for a negative one. `maximumCount` limits Unlock. If the system
  /// has no handle left, m_hObject is INVALID_HANDLE_VALUE, and every operation fails.
  explicit CSemaphore(int initialCount = 1, int maximumCount = 1);
  ~CSemaphore();
  CSemaphore(const CSemaphore&) = delete;
  CSemaphore& operator=(const CSemaphore&) = delete;

  /// Takes one from the count, waiting without a time limit while it is 0. False if the wait
  /// failed.
  [[nodiscard]] bool Lock();
  /// Adds one to the count. False, and nothing changes, at the maximum or if the system refuses it.
  /// Never blocks. A wait that begins later finds the count.
  bool Unlock();

  HANDLE m_hObject;  ///< owned; INVALID_HANDLE_VALUE if it could not be made

 private:
  int m_Maximum;
};

/// Holds one count of a semaphore. One thread may call Lock and another Unlock, after it.
class RASTREL_API CSingleLock {
 public:
  /// The semaphore is not owned and must outlive the lock. If `initialLock` is set, waits for a
  /// count as Lock does; IsLocked says whether that worked.
  explicit CSingleLock(CSemaphore* semaphore, bool initialLock = false);
  /// Gives the count back if it is held.
  ~CSingleLock();
  CSingleLock(const CSingleLock&) = delete;
  CSingleLock& operator=(const CSingleLock&) = delete;

  /// Waits for a count, without a time limit, and holds it. False if the wait failed or there is no
  /// semaphore. REQUIRES: none is held, since Unlock returns one count only.
  [[nodiscard]] bool Lock();
  /// Gives the count back. False if it is not held. Of two threads that call it at once, one
  /// succeeds.
  bool Unlock();
  /// Whether the count is held.
  [[nodiscard]] bool IsLocked() const;

 private:
  CSemaphore* m_pObject;
  mutable int m_Held = 0;  // accessed atomically
};
