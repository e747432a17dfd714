#include "rastrel/platform/os/recursive_lock.h"

#include "rastrel/platform/os/process.h"

namespace rastrel::os {

void RecursiveLock::Enter() {
  const std::uint32_t self = CurrentThreadId();
  std::unique_lock lock(m_Mutex);
  m_Left.wait(lock, [&] { return m_Depth == 0 || m_Owner == self; });
  m_Owner = self;
  ++m_Depth;
}

void RecursiveLock::Leave() {
  const std::scoped_lock lock(m_Mutex);
  if (--m_Depth > 0) return;
  m_Owner = 0;
  // Under the lock: whoever enters next may be about to destroy the object.
  m_Left.notify_one();
}

}  // namespace rastrel::os
