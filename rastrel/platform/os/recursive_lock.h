#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace rastrel::os {

/// A critical section: the thread that holds it may enter again, and leaves as often as it entered.
/// It may be destroyed while it is held, which std::recursive_mutex may not: the application log
/// needs that (see job/app_log.h).
class RecursiveLock {
 public:
  void Enter();
  /// REQUIRES: the calling thread holds it.
  void Leave();

 private:
  std::mutex m_Mutex;
  std::condition_variable m_Left;
  std::uint32_t m_Owner = 0;  // thread id; 0 while nobody holds it
  unsigned m_Depth = 0;
};

}  // namespace rastrel::os
