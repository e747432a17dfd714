#pragma once

#include <memory>

#include "rastrel/platform/mfc/sync.h"

namespace rastrel::printing {

/// Makes a semaphore of one count, and a lock that holds it: a wait for the semaphore then ends
/// only when the lock gives the count back. False if the system has no semaphore to give; both are
/// null then, and the application log has the message. The lock must go before the semaphore.
[[nodiscard]] bool MakeHeldSemaphore(std::unique_ptr<CSemaphore>& semaphore,
                                     std::unique_ptr<CSingleLock>& lock);

/// Logs that a semaphore could not be made.
void LogNoSemaphore();

}  // namespace rastrel::printing
