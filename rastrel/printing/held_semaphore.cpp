#include "rastrel/printing/held_semaphore.h"

#include "rastrel/job/app_log.h"

namespace rastrel::printing {

bool MakeHeldSemaphore(std::unique_ptr<CSemaphore>& semaphore, std::unique_ptr<CSingleLock>& lock) {
  semaphore = std::make_unique<CSemaphore>(1, 1);
  lock = std::make_unique<CSingleLock>(semaphore.get());
  if (semaphore->m_hObject != INVALID_HANDLE_VALUE && lock->Lock()) return true;
  lock.reset();
  semaphore.reset();
  LogNoSemaphore();
  return false;
}

void LogNoSemaphore() { CAppLog::Instance().Write("[Print]: Couldn't set up synchronization"); }

}  // namespace rastrel::printing
