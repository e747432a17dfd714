#include "rastrel/platform/mfc/sync.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include "rastrel/platform/os/file_descriptor.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;

namespace {

// A wait takes counts straight from the handle, so that the count has no other home than there;
// this keeps two threads that give one back from both finding room for it.
std::mutex& UnlockMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

CSemaphore::CSemaphore(int initialCount, int maximumCount)
    : m_hObject(os::CreateSemaphoreHandle(static_cast<unsigned>(std::max(initialCount, 0)))
                    .ValueOr(INVALID_HANDLE_VALUE)),
      m_Maximum(maximumCount) {}

CSemaphore::~CSemaphore() { os::CloseHandle(m_hObject); }

bool CSemaphore::Lock() {
  return m_hObject != INVALID_HANDLE_VALUE && os::AcquireSemaphoreHandle(m_hObject);
}

bool CSemaphore::Unlock() {
  if (m_hObject == INVALID_HANDLE_VALUE) return false;
  const std::scoped_lock lock(UnlockMutex());
  if (static_cast<std::int64_t>(os::SemaphoreCount(m_hObject)) >= m_Maximum) return false;
  return static_cast<bool>(os::ReleaseSemaphoreHandle(m_hObject));
}

CSingleLock::CSingleLock(CSemaphore* semaphore, bool initialLock) : m_pObject(semaphore) {
  if (initialLock) static_cast<void>(Lock());
}

CSingleLock::~CSingleLock() { Unlock(); }

bool CSingleLock::Lock() {
  if (m_pObject == nullptr || !m_pObject->Lock()) return false;
  std::atomic_ref(m_Held).store(1, std::memory_order_release);
  return true;
}

bool CSingleLock::Unlock() {
  if (std::atomic_ref(m_Held).exchange(0, std::memory_order_acq_rel) == 0) return false;
  return m_pObject->Unlock();
}

bool CSingleLock::IsLocked() const {
  return std::atomic_ref(m_Held).load(std::memory_order_acquire) != 0;
}
