#pragma once

#include <pthread.h>

#include <functional>
#include <memory>

namespace rastrel::os {

/// A thread that its owner joins. Unlike std::thread it reports a thread that could not be made by
/// a null pointer, and never throws.
class Thread {
 public:
  /// Runs `body` on a new thread. Null if the system has none to give.
  [[nodiscard]] static std::unique_ptr<Thread> Start(std::function<void()> body) noexcept;
  /// Waits for the thread's end without a limit. REQUIRES: not called before.
  void Join() noexcept;
  /// REQUIRES: joined.
  ~Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

 private:
  Thread() = default;
  std::function<void()> m_Body;
  pthread_t m_Thread{};
};

}  // namespace rastrel::os
